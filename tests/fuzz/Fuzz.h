// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace bram::fuzz
{

/// A property that holds for every input; the fuzzer keeps the input for which it does not.
inline void require(bool holds, const char *property)
{
    if (!holds) {
        std::fprintf(stderr, "Broken property: %s\n", property);
        std::abort();
    }
}

inline QByteArray toBytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
}

/// The input as text. Its first byte chooses how the rest is read, so that halves of surrogate pairs,
/// which no UTF-8 yields, turn up too.
inline QString toText(const QByteArray &bytes)
{
    if (bytes.isEmpty()) {
        return {};
    }
    if ((bytes.front() & 1) == 0) {
        return QString::fromUtf8(bytes.sliced(1));
    }
    QString text;
    for (qsizetype i = 1; i + 1 < bytes.size(); i += 2) {
        text.append(QChar(uchar(bytes[i]), uchar(bytes[i + 1])));
    }
    return text;
}

/// Whether `text` is not blank and has no blanks at its ends.
inline bool isTrimmed(const QString &text)
{
    return !text.isEmpty() && text.trimmed() == text;
}

} // namespace bram::fuzz
