// SPDX-License-Identifier: Apache-2.0
#include "ui/language/ToolkitTranslator.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace bram
{

namespace
{
/// What people see. Others than these, as the sockets', files' and parsers', are where errors come from.
constexpr std::array<std::string_view, 29> shownContexts {
    "CloseButton",
    "QAbstractSpinBox",
    "QAccessibleActionInterface",
    "QApplication",
    "QColorDialog",
    "QComboBox",
    "QDBusTrayIcon",
    "QDateTimeParser",
    "QDialog",
    "QDialogButtonBox",
    "QDockWidget",
    "QErrorMessage",
    "QFileDialog",
    "QFileSystemModel",
    "QFontDialog",
    "QGnomeTheme",
    "QGuiApplication",
    "QInputDialog",
    "QKeySequenceEdit",
    "QLineEdit",
    "QMessageBox",
    "QPlatformTheme",
    "QProgressDialog",
    "QScrollBar",
    "QShortcut",
    "QTabBar",
    "QUnicodeControlCharacterMenu",
    "QWhatsThisAction",
    "QWidgetTextControl",
};
static_assert(std::ranges::is_sorted(shownContexts));
} // namespace

QString ToolkitTranslator::translate(const char *context, const char *sourceText,
                                     const char *disambiguation, int n) const
{
    return std::ranges::binary_search(shownContexts, std::string_view(context))
        ? QTranslator::translate(context, sourceText, disambiguation, n)
        : QString();
}

} // namespace bram
