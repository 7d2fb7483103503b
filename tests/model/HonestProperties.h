// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/HonestDisplay.h"

#include <QList>
#include <QString>

namespace bram::test
{

using namespace Qt::StringLiterals;

/// What a shown line stands for: each mark replaced by what it names. Written for readability of the
/// rule, not taken from the code under test. A text that is no valid showing yields something else.
inline QString rebuiltLine(const QString &shown)
{
    QString result;
    for (qsizetype i = 0; i < shown.size(); ++i) {
        if (shown[i] != u'⟨') {
            result.append(shown[i]);
            continue;
        }
        const qsizetype end = shown.indexOf(u'⟩', i);
        if (end < 0) {
            return u"no end of a mark"_s;
        }
        const QString name = shown.sliced(i + 1, end - i - 1);
        i = end;
        if (name.startsWith("U+"_L1)) {
            const char32_t c = name.sliced(2).toUInt(nullptr, 16);
            result.append(c < 0x10000 ? QString(QChar(char16_t(c))) : QString::fromUcs4(&c, 1));
            continue;
        }
        const qsizetype count = name.section(u' ', 0, 0).toInt();
        if (name.endsWith("line feeds"_L1)) {
            ++i; // the line break that belongs to the mark
            if (i >= shown.size() || shown[i] != u'\n') {
                return u"no line break after line feeds"_s;
            }
            result.append(QString(count, u'\n'));
        } else if (name.endsWith("blanks"_L1) || name == "1 blank"_L1) {
            result.append(QString(count, u' '));
        } else {
            return u"an unknown mark: "_s + name;
        }
    }
    return result;
}

/// A shown line with marks in place of the tabs that are drawn at its start.
inline QString withMarkedTabs(const QString &line)
{
    QString result;
    qsizetype column = 0;
    while (column < line.size() && (line[column] == u' ' || line[column] == u'→')) {
        const bool isTab = line[column] == u'→';
        result.append(isTab ? u"⟨U+0009⟩"_s : u" "_s);
        const qsizetype end = isTab ? (column / 8 + 1) * 8 : column + 1;
        while (++column < end) {
            if (column == line.size() || line[column] != u' ') {
                return u"⟨a tab without its width⟩"_s;
            }
        }
    }
    return result + line.sliced(column);
}

/// The same for a text whose line feeds are line breaks.
inline QString rebuilt(const QString &shown)
{
    QStringList lines = shown.split(u'\n');
    for (QString &line : lines) {
        line = withMarkedTabs(line);
    }
    return rebuiltLine(lines.join(u'\n'));
}

/// Whether a shown text hides how many blanks or lines there are, or where a line begins.
inline bool hidesBlanks(const QString &shown)
{
    for (const QString &line : shown.split(u'\n')) {
        qsizetype indentation = 0;
        while (indentation < line.size()
               && (line[indentation] == u' ' || line[indentation] == u'→')) {
            ++indentation;
        }
        if (indentation > 64 || line.endsWith(u' ')
            || line.sliced(indentation).contains("    "_L1)) {
            return true;
        }
    }
    return shown.contains("\n\n\n\n"_L1);
}

inline bool misleads(char32_t c, char32_t previous)
{
    const auto category = QChar::category(c);
    const auto direction = QChar::direction(c);
    return (category >= QChar::Other_Control && category <= QChar::Other_NotAssigned && c != U'\n')
        || (category >= QChar::Separator_Space && category <= QChar::Separator_Paragraph
            && c != U' ')
        || direction == QChar::DirR || direction == QChar::DirAL || direction == QChar::DirAN
        || (QChar::isMark(c) && (previous == U' ' || previous == U'\n' || previous == U'⟩'))
        || category == QChar::Mark_Enclosing;
}

/// What is wrong with how `source` is shown; empty when all is well, as it must be for every text.
inline QString dishonesty(const QString &source)
{
    const HonestText shown = honestDisplay(source);
    const HonestText line = honestLine(source);
    const auto about = [&source](const QString &what) {
        return what + ": "_L1 + QString::fromLatin1(source.toUtf8().toPercentEncoding());
    };
    if (rebuilt(shown.text) != source || rebuiltLine(line.text) != source) {
        return about(u"cannot be rebuilt"_s);
    }
    if (shown.marked != shown.text.contains(u'⟨') || line.marked != (line.text != source)
        || (shown.suspicious && !shown.marked) || (line.suspicious && !line.marked)) {
        return about(u"wrongly flagged"_s);
    }
    if (hidesBlanks(shown.text) || line.text.contains(u'\n') || line.text.contains("    "_L1)) {
        return about(u"hides blanks or lines"_s);
    }
    char32_t previous = U'\n';
    for (const char32_t c : shown.text.toUcs4()) {
        if (misleads(c, previous)) {
            return about(u"shows U+"_s + QString::number(c, 16));
        }
        previous = c;
    }
    return {};
}

} // namespace bram::test
