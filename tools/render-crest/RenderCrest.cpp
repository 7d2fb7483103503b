// SPDX-License-Identifier: Apache-2.0
// Draws an SVG picture at several sizes, while the program is built:
//   render-crest PICTURE.svg FOLDER NAME SIZE...
// makes FOLDER/NAME-SIZE.png for each. So the program itself needs no SVG library when it starts.
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    const QStringList arguments = [&] {
        QStringList list;
        for (int i = 1; i < argc; ++i) {
            list << QString::fromLocal8Bit(argv[i]);
        }
        return list;
    }();
    if (arguments.size() < 4) {
        std::fputs("usage: render-crest PICTURE.svg FOLDER NAME SIZE...\n", stderr);
        return 2;
    }
    QSvgRenderer renderer(arguments[0]);
    if (!renderer.isValid()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(arguments[0]));
        return 1;
    }
    for (const QString &size : arguments.mid(3)) {
        QImage image(size.toInt(), size.toInt(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        renderer.render(&painter, image.rect());
        painter.end();
        const QString file = u"%1/%2-%3.png"_s.arg(arguments[1], arguments[2], size);
        if (!image.save(file)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return 1;
        }
    }
    return 0;
}
