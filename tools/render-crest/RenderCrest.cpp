// SPDX-License-Identifier: Apache-2.0
// Draws an SVG picture at several sizes, while the program is built:
//   render-crest PICTURE.svg FOLDER NAME png|argb SIZE...
// makes FOLDER/NAME-SIZE.png or .argb for each; the latter is nothing but its premultiplied 32-bit pixels. So
// the program needs no SVG library, and for the picture it starts with none of the image formats either, the
// search for which takes 2 ms.
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{
bool savePixels(const QImage &image, const QString &file)
{
    QFile out(file);
    return out.open(QIODevice::WriteOnly)
        && out.write(reinterpret_cast<const char *>(image.constBits()), image.sizeInBytes())
        == image.sizeInBytes();
}
} // namespace

int main(int argc, char **argv)
{
    const QStringList arguments = [&] {
        QStringList list;
        for (int i = 1; i < argc; ++i) {
            list << QString::fromLocal8Bit(argv[i]);
        }
        return list;
    }();
    if (arguments.size() < 5) {
        std::fputs("usage: render-crest PICTURE.svg FOLDER NAME png|argb SIZE...\n", stderr);
        return 2;
    }
    QSvgRenderer renderer(arguments[0]);
    if (!renderer.isValid()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(arguments[0]));
        return 1;
    }
    for (const QString &size : arguments.mid(4)) {
        QImage image(size.toInt(), size.toInt(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        renderer.render(&painter, image.rect());
        painter.end();
        const QString file = u"%1/%2-%3.%4"_s.arg(arguments[1], arguments[2], size, arguments[3]);
        if (!(arguments[3] == u"png"_s ? image.save(file) : savePixels(image, file))) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return 1;
        }
    }
    return 0;
}
