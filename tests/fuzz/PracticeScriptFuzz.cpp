// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "practice/PracticeScript.h"

#include <algorithm>

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

namespace
{
/// Every text can be written in a script.
void checkEscapes(const QString &text)
{
    QString line = u"raw "_s;
    for (const QChar unit : text) {
        line += u"\\u"_s + QString::number(unit.unicode(), 16).rightJustified(4, u'0');
    }
    const auto steps = parsePracticeScript(line);
    require(text.isEmpty() || (steps && steps->size() == 1 && steps->front().text == text),
            "an escaped text is read back");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = fuzz::toText(fuzz::toBytes(data, size));
    checkEscapes(text);
    const auto steps = parsePracticeScript(text);
    if (!steps) {
        const QString &message = steps.error().message;
        require(message.startsWith("line "_L1) && !message.contains(u'\n'),
                "a refusal is one line and says which");
        return 0;
    }
    int line = 0;
    for (const ScriptStep &step : *steps) {
        require(step.line > line, "steps keep their order");
        line = step.line;
        require(step.number >= 0, "no time is negative");
        require(std::ranges::none_of(step.id, [](QChar c) { return c.isSpace(); }),
                "an id is one word");
    }
    require(line <= text.count(u'\n') + 1, "a line number is in the file");
    return 0;
}
