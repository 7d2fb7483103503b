// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/CrestIcon.h"

#include "ui/desktop/BadgeIcon.h"

#include <QFile>
#include <QGuiApplication>
#include <QPainter>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QSizeF baseSize(22, 22);
const auto appIconWidths = {22, 32, 48, 64, 128, 256};
constexpr qreal badgeDiameter = 12.0;
constexpr qreal serviceDotDiameter = 7.5;

/// White 0.55 at alpha 0.72.
QColor grayWash()
{
    return QColor::fromRgbF(0.55F, 0.55F, 0.55F, 0.72F);
}

PointImage drawn(const QIcon &icon)
{
    return PointImage(baseSize, [&](QPainter &painter, int) {
        icon.paint(&painter, QRectF({}, baseSize).toRect());
    });
}

/// From files called after the name and the width in pixels.
QIcon iconFromFiles(const QString &folder, const QString &name, std::initializer_list<int> widths)
{
    QIcon icon;
    for (const int width : widths) {
        const QString file = u"%1/%2-%3.png"_s.arg(folder, name, QString::number(width));
        if (QFile::exists(file)) {
            icon.addFile(file);
        }
    }
    return icon;
}

/// A picture that the build has drawn; nothing when it is not there.
QImage imageFromPixels(const QString &folder, QSize size)
{
    QFile file(u"%1/MenuBarCrest-%2.argb"_s.arg(folder, QString::number(size.width())));
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    if (!file.open(QIODevice::ReadOnly) || file.size() != image.sizeInBytes()
        || file.read(reinterpret_cast<char *>(image.bits()), file.size()) != file.size()) {
        return {};
    }
    return image;
}

int caseNumber(IndicatorState state)
{
    switch (state) {
    case IndicatorState::Green:
        return 0;
    case IndicatorState::Yellow:
        return 1;
    case IndicatorState::Red:
        return 2;
    case IndicatorState::Gray:
        return 3;
    }
    Q_UNREACHABLE();
}
} // namespace

PointImage crestBaseIcon(const QString &artworkFolder)
{
    // One file for each scale, drawn pixel for pixel.
    bool isComplete = true;
    PointImage crest(baseSize, [&](QPainter &painter, int scale) {
        const QImage image = imageFromPixels(artworkFolder, baseSize.toSize() * scale);
        isComplete = isComplete && !image.isNull();
        painter.drawImage(QRectF({}, baseSize), image);
    });
    if (isComplete) {
        return crest;
    }
    for (const QIcon &icon :
         {QGuiApplication::windowIcon(), iconFromFiles(artworkFolder, u"AppIcon"_s, appIconWidths),
          QIcon::fromTheme(u"bell"_s, QIcon::fromTheme(u"notifications"_s))}) {
        if (!icon.isNull()) {
            return drawn(icon);
        }
    }
    return drawn({});
}

PointImage grayCrestIcon()
{
    const PointImage crest = crestBaseIcon();
    return PointImage(crest.size(), [&](QPainter &painter, int scale) {
        const QRectF all({}, crest.size());
        painter.drawImage(all, crest.image(scale));
        // The wash stays inside the crest's shape: the panel around it keeps its colour.
        painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
        painter.fillRect(all, grayWash());
    });
}

PointImage menuBarIcon(IndicatorState connection, qsizetype menuBadgeCount, Alarm alarm)
{
    const PointImage base = connection == IndicatorState::Green ? crestBaseIcon() : grayCrestIcon();
    PointImage icon
        = BadgeIcon::make(base,
                          {.count = menuBadgeCount,
                           .badgeDiameter = badgeDiameter,
                           .serviceRunning = alarm == Alarm::On,
                           .serviceIndicatorDiameter = serviceDotDiameter,
                           .serviceIndicatorColor = QColor::fromRgb(BadgeIcon::systemRed)});
    // It keeps its colours without a badge as well.
    icon.setTemplate(false);
    return icon;
}

QString iconRenderKey(qsizetype menuBadgeCount, IndicatorState connection,
                      const QString &activeApprovalId, Alarm alarm)
{
    const QString key = u"menu-icon-%1-%2-%3"_s.arg(
        QString::number(menuBadgeCount), QString::number(caseNumber(connection)),
        activeApprovalId.isEmpty() ? u"none"_s : activeApprovalId);
    return alarm == Alarm::On ? key + u"-alarm"_s : key;
}

QIcon applicationIcon()
{
    return iconFromFiles(u":/crest"_s, u"AppIcon"_s, appIconWidths);
}

} // namespace bram
