// SPDX-License-Identifier: Apache-2.0
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

const QString catalogue = QStringLiteral(BRAM_CATALOGUE);

/// Translations by "context: source text"; empty where one is missing.
QMap<QString, QString> translationsIn(const QString &path)
{
    QMap<QString, QString> translations;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return translations;
    }
    QXmlStreamReader xml(&file);
    QString context;
    QString source;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        if (xml.name() == u"name") {
            context = xml.readElementText();
        } else if (xml.name() == u"source") {
            source = xml.readElementText();
        } else if (xml.name() == u"translation") {
            const bool isFinished = xml.attributes().value(u"type"_s).isEmpty();
            const QString text = xml.readElementText();
            translations.insert(context + u": "_s + source, isFinished ? text : QString());
        }
    }
    return translations;
}

QStringList placeholdersIn(const QString &text)
{
    static const QRegularExpression placeholder(u"%L?\\d|`[a-z-]+`"_s);
    QStringList found;
    for (auto it = placeholder.globalMatch(text); it.hasNext();) {
        found += it.next().captured();
    }
    found.sort();
    return found;
}

TEST(Catalogue, hasEveryTextOfTheProgramAndNoOther)
{
    const QTemporaryDir folder;
    const QString updated = folder.filePath(u"bram_ko.ts"_s);
    ASSERT_TRUE(QFile::copy(catalogue, updated));
    QProcess lupdate;
    lupdate.start(QStringLiteral(BRAM_LUPDATE),
                  {u"-silent"_s, u"-no-obsolete"_s, u"-locations"_s, u"none"_s,
                   QStringLiteral(BRAM_SOURCES), u"-ts"_s, updated});
    ASSERT_TRUE(lupdate.waitForFinished(60'000) && lupdate.exitCode() == 0)
        << lupdate.readAllStandardError().toStdString();

    const auto wanted = translationsIn(updated);
    ASSERT_GT(wanted.size(), 100);
    for (const auto &[key, translation] : wanted.asKeyValueRange()) {
        EXPECT_FALSE(translation.isEmpty()) << "not translated: " << qPrintable(key);
        EXPECT_EQ(placeholdersIn(translation), placeholdersIn(key)) << qPrintable(key);
    }
    for (const QString &key : translationsIn(catalogue).keys()) {
        EXPECT_TRUE(wanted.contains(key)) << "no longer used: " << qPrintable(key);
    }
}

} // namespace
} // namespace bram
