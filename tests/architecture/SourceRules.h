// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace bram::test
{

/// Faults of the source tree below `root`, a line each, "file: what is wrong": includes that go to a
/// room to the right or beside (in root/src), files without their licence line (in src, tests, bench and
/// cmake), lambda connections without a context object, and markers of unfinished work and awaits inside a condition (in src).
/// `qtHeaders` is the folder that holds Qt's own ones.
std::vector<std::string> sourceFaults(const std::filesystem::path &root,
                                      const std::filesystem::path &qtHeaders);

} // namespace bram::test
