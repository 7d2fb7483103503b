// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QIcon>
#include <QPalette>

namespace bram
{

/// A bin, in the colours of the text of a button, at one to three pixels a point: not every icon theme has one.
QIcon trashIcon(const QPalette &palette);

} // namespace bram
