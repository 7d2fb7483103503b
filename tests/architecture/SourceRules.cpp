// SPDX-License-Identifier: Apache-2.0
#include "SourceRules.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string_view>

namespace bram::test
{

namespace fs = std::filesystem;

namespace
{
using Faults = std::vector<std::string>;

/// What stands left of each room. Rooms that stand side by side do not know each other.
const std::map<std::string, std::set<std::string>> &usableRooms()
{
    static const auto table = [] {
        const std::vector<std::vector<std::string>> columns {{"model"},
                                                             {"system"},
                                                             {"audit", "config"},
                                                             {"gateway", "allowlist", "telegram"},
                                                             {"monitor"},
                                                             {"practice", "ui"},
                                                             {"app"}};
        std::map<std::string, std::set<std::string>> usable;
        std::set<std::string> left;
        for (const auto &column : columns) {
            for (const std::string &room : column) {
                usable[room] = left;
                usable[room].insert(room);
            }
            left.insert(column.begin(), column.end());
        }
        return usable;
    }();
    return table;
}

std::string contentOf(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

bool isSource(const fs::path &file)
{
    const std::string suffix = file.extension();
    return suffix == ".cpp" || suffix == ".h";
}

bool needsLicenceLine(const fs::path &file)
{
    return isSource(file) || file.extension() == ".cmake" || file.filename() == "CMakeLists.txt";
}

std::vector<fs::path> filesBelow(const fs::path &folder)
{
    std::vector<fs::path> files;
    if (fs::exists(folder)) {
        for (const auto &entry : fs::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file()) {
                files.push_back(entry.path());
            }
        }
    }
    std::ranges::sort(files);
    return files;
}

bool isForScreens(const std::string &header, const fs::path &qtHeaders)
{
    return header.starts_with("QtGui") || header.starts_with("QtWidgets")
        || fs::exists(qtHeaders / "QtGui" / header) || fs::exists(qtHeaders / "QtWidgets" / header);
}

void checkIncludes(const std::string &room, const std::string &content, const fs::path &qtHeaders,
                   Faults &faults)
{
    const auto usable = usableRooms().find(room);
    if (usable == usableRooms().end()) {
        faults.push_back("is in a room that has no place in the order");
        return;
    }
    static const std::regex include(R"re(^\s*#\s*include\s*(?:"([^"/]+)/[^"]*"|<([^>]+)>))re",
                                    std::regex::multiline);
    for (std::sregex_iterator it(content.begin(), content.end(), include), end; it != end; ++it) {
        const std::string other = (*it)[1];
        const std::string library = (*it)[2];
        if (!other.empty() && !usable->second.contains(other)) {
            faults.push_back("includes from " + other);
        }
        const bool mayUseScreens = room == "ui" || room == "app";
        if (!library.empty() && !mayUseScreens && isForScreens(library, qtHeaders)) {
            faults.push_back("includes <" + library + ">, which is for the user interface");
        }
    }
}

/// The text without comments.
std::string withoutComments(const std::string &content)
{
    static const std::regex comment(R"re(//[^\n]*|/\*[^]*?\*/)re");
    return std::regex_replace(content, comment, "");
}

/// The arguments of the call whose parenthesis opens at `open`; nothing when it is never closed.
std::optional<std::vector<std::string>> argumentsOf(const std::string &code, std::size_t open)
{
    std::vector<std::string> arguments(1);
    int depth = 0;
    for (std::size_t i = open; i < code.size(); ++i) {
        const char c = code[i];
        depth += std::string_view("([{").contains(c) ? 1 : 0;
        depth -= std::string_view(")]}").contains(c) ? 1 : 0;
        if (depth == 0) {
            return arguments;
        }
        if (c == ',' && depth == 1) {
            arguments.emplace_back();
        } else if (i != open) {
            arguments.back() += c;
        }
    }
    return std::nullopt;
}

void checkConnections(const std::string &content, Faults &faults)
{
    static const std::regex call(R"re(\bconnect\s*\()re");
    const std::string code = withoutComments(content);
    for (std::sregex_iterator it(code.begin(), code.end(), call), end; it != end; ++it) {
        const auto open = static_cast<std::size_t>(it->position() + it->length() - 1);
        const auto arguments = argumentsOf(code, open);
        if (!arguments || arguments->size() != 3) {
            continue;
        }
        const std::string &last = arguments->back();
        if (last.find_first_not_of(" \n") != std::string::npos
            && last[last.find_first_not_of(" \n")] == '[') {
            faults.push_back("connects a lambda without a context object");
        }
    }
}

/// Only comments are looked at: a sample command may hold such a word.
void checkMarkers(const std::string &content, Faults &faults)
{
    static const std::regex marker(
        R"re((?://|/\*|^\s*\*)[^\n]*?\b(TODO|FIXME|XXX|HACK|[Ss]tub(bed)?|[Nn]ot (yet )?implemented)\b)re",
        std::regex::multiline);
    for (std::sregex_iterator it(content.begin(), content.end(), marker), end; it != end; ++it) {
        faults.push_back("holds the mark " + (*it)[1].str());
    }
}

/// g++ 12 miscompiles an await directly inside a condition or a conditional expression.
void checkAwaits(const std::string &content, Faults &faults)
{
    static const std::regex risky(
        R"re(\b(if|while|switch)\s*\(\s*!?\s*co_await\b|\?[^;"'{}]*\bco_await\b|(&&|\|\|)\s*!?\s*co_await\b)re");
    const std::string code = withoutComments(content);
    if (std::regex_search(code, risky)) {
        faults.push_back("awaits inside a condition, which g++ 12 miscompiles");
    }
}

void checkLicenceLine(const std::string &content, Faults &faults)
{
    if (!content.substr(0, content.find('\n')).contains("SPDX-License-Identifier: ")) {
        faults.push_back("does not begin with its SPDX line");
    }
}
} // namespace

std::vector<std::string> sourceFaults(const fs::path &root, const fs::path &qtHeaders)
{
    Faults all;
    for (const char *folder : {"src", "tests", "bench", "cmake"}) {
        for (const fs::path &file : filesBelow(root / folder)) {
            const std::string content = contentOf(file);
            const fs::path path = file.lexically_relative(root);
            Faults faults;
            if (needsLicenceLine(file)) {
                checkLicenceLine(content, faults);
            }
            if (isSource(file) && path.begin()->string() == "src") {
                checkIncludes(std::next(path.begin())->string(), content, qtHeaders, faults);
                checkConnections(content, faults);
                checkMarkers(content, faults);
                checkAwaits(content, faults);
            }
            for (const std::string &fault : faults) {
                all.push_back(path.string() + ": " + fault);
            }
        }
    }
    return all;
}

} // namespace bram::test
