// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QString>

namespace bram
{

/// A library that this program is built on, and under what terms.
struct PartUsed {
    QString name;
    QString purpose; ///< in the language of the moment
    QString licence; ///< SPDX identifier
    QString holders; ///< of the copyright
    QString package; ///< of the system, which has the whole text of the licence
};

QList<PartUsed> partsUsed();

/// All of them as plain text to read and to copy.
QString partsUsedText();

} // namespace bram
