// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringDecoder>
#include <QStringList>

#include <algorithm>
#include <cwchar>

namespace bram::test
{

/// What a person would see: as much of a terminal as a line editor makes use of. Wide characters take two
/// places, the second of which is empty.
class Screen
{
public:
    explicit Screen(int columns)
        : m_columns(columns)
    {
        m_rows.append(QList<QString>());
    }

    void take(const QByteArray &bytes)
    {
        for (const char32_t c : QString(m_decoder(bytes)).toUcs4()) {
            if (m_inSequence) {
                takeOfSequence(c);
            } else if (c == 0x1b) {
                m_inSequence = true;
                m_sequence.clear();
            } else if (c == U'\r') {
                m_column = 0;
            } else if (c == U'\n') {
                down(1);
            } else if (c == U'\b') {
                m_column = std::max(0, std::min(m_column, m_columns - 1) - 1);
            } else if (c >= 0x20) {
                put(QString::fromUcs4(&c, 1), std::max(1, wcwidth(wchar_t(c))));
            }
        }
    }

    /// All rows, without blanks at their ends and empty rows at the end.
    QStringList rows() const
    {
        QStringList result;
        for (const auto &row : m_rows) {
            QString text = row.join(QString());
            while (text.endsWith(u' ')) {
                text.chop(1);
            }
            result.append(text);
        }
        while (!result.isEmpty() && result.last().isEmpty()) {
            result.removeLast();
        }
        return result;
    }
    int column() const { return m_column; }
    void setColumns(int columns) { m_columns = columns; }
    QString unknown() const { return m_unknown; }

private:
    QList<QString> &here() { return m_rows[m_row]; }
    void down(int count)
    {
        m_row += count;
        while (m_rows.size() <= m_row) {
            m_rows.append(QList<QString>());
        }
    }
    void put(const QString &c, int width)
    {
        if (m_column + width > m_columns) {
            m_column = 0;
            down(1);
        }
        while (here().size() < m_column + width) {
            here().append(QStringLiteral(" "));
        }
        here()[m_column] = c;
        if (width == 2) {
            here()[m_column + 1] = QString();
        }
        m_column += width;
    }
    void takeOfSequence(char32_t c)
    {
        if (m_sequence.isEmpty() && c == U'[') {
            m_sequence = QStringLiteral("[");
        } else if (c >= 0x30 && c <= 0x3f) {
            m_sequence += QChar(char16_t(c));
        } else {
            m_inSequence = false;
            obey(c, m_sequence.mid(1).toInt());
        }
    }
    void obey(char32_t command, int given)
    {
        const int count = std::max(1, given);
        switch (command) {
        case U'A':
            m_row = std::max(0, m_row - count);
            break;
        case U'B':
            down(count);
            break;
        case U'C':
            m_column = std::min(m_columns - 1, m_column + count);
            break;
        case U'D':
            m_column = std::max(0, m_column - count);
            break;
        case U'G':
            m_column = count - 1;
            break;
        case U'J':
            m_rows.resize(m_row + 1);
            [[fallthrough]];
        case U'K':
            here().resize(std::min<qsizetype>(here().size(), m_column));
            break;
        case U'P':
            here().remove(m_column, std::min<qsizetype>(count, here().size() - m_column));
            break;
        case U'@':
            here().insert(m_column, count, QStringLiteral(" "));
            break;
        case U'm':
            break;
        default:
            m_unknown += m_sequence + QString::fromUcs4(&command, 1) + u' ';
        }
    }

    int m_columns;
    int m_row = 0;
    int m_column = 0;
    QList<QList<QString>> m_rows;
    bool m_inSequence = false;
    QString m_sequence;
    QString m_unknown;
    QStringDecoder m_decoder {QStringDecoder::Utf8};
};

} // namespace bram::test
