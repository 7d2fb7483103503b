// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QTranslator>

namespace bram
{

/// The toolkit's own words in its controls and dialogs, from its catalogue. Its errors stay English: they go into
/// logs and records, which are read by others and by programs.
class ToolkitTranslator final : public QTranslator
{
    Q_OBJECT

public:
    QString translate(const char *context, const char *sourceText, const char *disambiguation,
                      int n) const override;
};

} // namespace bram
