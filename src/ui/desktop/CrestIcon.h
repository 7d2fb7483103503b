// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/IndicatorState.h"
#include "ui/desktop/PointImage.h"

#include <QString>

namespace bram
{

/// The crest as the tray shows it, 22 points wide and high. Where the program's own artwork is missing, the
/// application's icon or the theme's bell takes its place.
PointImage crestBaseIcon(const QString &artworkFolder = QStringLiteral(":/crest"));

/// The same washed grey.
PointImage grayCrestIcon();

/// Whether the tray shows that something of the program's own needs the operator, whatever is waiting.
enum class Alarm {
    Off,
    On,
};

/// What the tray shows: in colour while the connection is healthy, grey otherwise, with the number of
/// waiting requests when there are any, and with a red dot at the other side for an alarm.
PointImage menuBarIcon(IndicatorState connection, qsizetype menuBadgeCount,
                       Alarm alarm = Alarm::Off);

/// Two equal keys stand for the same picture in the tray: it is drawn anew when the key changes.
/// `activeApprovalId` is empty when no popup is open.
QString iconRenderKey(qsizetype menuBadgeCount, IndicatorState connection,
                      const QString &activeApprovalId, Alarm alarm = Alarm::Off);

/// The crest for windows and the about text, from 22 to 256 pixels. Looks for image formats, which takes
/// about 2 ms once: not for the start of the program.
QIcon applicationIcon();

} // namespace bram
