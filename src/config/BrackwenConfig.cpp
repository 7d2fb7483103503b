// SPDX-License-Identifier: Apache-2.0
#include "config/BrackwenConfig.h"

#include "system/Files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QSet>

#include <algorithm>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qint64 maxConfigBytes = 16 * 1024 * 1024;

QString platformFileIn(const QString &home)
{
    return home + u"/.brackwen/brackwen.json"_s;
}

/// The object in the file at `path`, or why there is none: words of this program, not the file's.
std::expected<QJsonObject, Error> readObject(const QString &path)
{
    const auto content = readRegularFile(path, maxConfigBytes);
    if (!content) {
        return std::unexpected(content.error());
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(*content, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        return std::unexpected(
            Error {u"%1 at byte %2"_s.arg(parseError.errorString()).arg(parseError.offset)});
    }
    if (!document.isObject()) {
        return std::unexpected(Error {u"not a JSON object"_s});
    }
    return document.object();
}

bool holdsSecret(const QJsonValue &value)
{
    if (value.isArray()) {
        return std::ranges::any_of(value.toArray(), &holdsSecret);
    }
    const QJsonObject object = value.toObject();
    for (auto field = object.begin(); field != object.end(); ++field) {
        const QString name = field.key().toLower();
        const bool isNamedSo = name.endsWith("token"_L1) || name.endsWith("password"_L1);
        if ((isNamedSo && !field.value().toString().trimmed().isEmpty())
            || holdsSecret(field.value())) {
            return true;
        }
    }
    return false;
}

/// Also past the folders above.
bool isReadableByAll(const QString &path)
{
    const QFileInfo file(QFileInfo(path).canonicalFilePath());
    if (!file.permission(QFile::ReadOther)) {
        return false;
    }
    QDir folder = file.absoluteDir();
    do {
        if (!QFileInfo(folder.path()).permission(QFile::ExeOther)) {
            return false;
        }
    } while (!folder.isRoot() && folder.cdUp());
    return true;
}
} // namespace

AccountFacts AccountFacts::ofProcess()
{
    AccountFacts facts;
    facts.homeFolder = QDir::homePath();
    passwd entry = {};
    passwd *found = nullptr;
    std::vector<char> buffer(16 * 1024);
    while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE) {
        buffer.resize(buffer.size() * 2);
    }
    if (found != nullptr) {
        facts.loginName = QFile::decodeName(entry.pw_name);
        if (const QString home = QFile::decodeName(entry.pw_dir); !home.isEmpty()) {
            facts.userDatabaseHome = home;
        }
    }
    return facts;
}

BrackwenConfig::BrackwenConfig(const Environment &environment, const AccountFacts &account)
    : m_environment(environment)
    , m_account(account)
{
}

QStringList BrackwenConfig::candidatePaths() const
{
    QStringList paths;
    QSet<QString> places;
    const auto add = [&](const QString &path) {
        const QString place = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
        if (!places.contains(place)) {
            places.insert(place);
            paths.append(path);
        }
    };
    if (const auto named = m_environment.trimmed(u"BRACKWEN_CONFIG"_s)) {
        add(QFileInfo(*named).isDir() ? *named + u"/brackwen.json"_s : *named);
    }
    add(platformFileIn(m_account.homeFolder));
    if (const auto home = m_environment.trimmed(u"HOME"_s)) {
        add(platformFileIn(*home));
    }
    if (m_account.userDatabaseHome) {
        add(platformFileIn(*m_account.userDatabaseHome));
    }
    if (!m_account.loginName.isEmpty()) {
        const QString home = m_account.usersFolder + u'/' + m_account.loginName;
        add(platformFileIn(home));
        add(platformFileIn(home + u"/Library/Containers/QX.BrackwenApprovalsMenu/Data"_s));
    }
    return paths;
}

QList<BrackwenConfig::File> BrackwenConfig::loadFiles() const
{
    QList<File> files;
    for (const QString &path : candidatePaths()) {
        if (const auto object = readObject(path)) {
            files.append({path, *object});
        }
    }
    return files;
}

QList<QJsonObject> BrackwenConfig::loadObjects() const
{
    QList<QJsonObject> objects;
    for (const File &file : loadFiles()) {
        objects.append(file.content);
    }
    return objects;
}

bool BrackwenConfig::isPresent() const
{
    return std::ranges::any_of(candidatePaths(), [](const QString &path) {
        return readRegularFile(path, maxConfigBytes).has_value();
    });
}

QStringList BrackwenConfig::problems() const
{
    QStringList lines;
    for (const QString &path : candidatePaths()) {
        if (!QFileInfo::exists(path)) {
            continue;
        }
        if (const auto object = readObject(path); !object) {
            // A text from reading the file names it, too.
            const QString &message = object.error().message;
            const QString reason = message.section(path + u": "_s, -1);
            lines.append(u"configuration file %1 cannot be used: %2"_s.arg(path, reason));
        }
    }
    return lines;
}

QStringList BrackwenConfig::exposures() const
{
    QStringList lines;
    for (const File &file : loadFiles()) {
        if (holdsSecret(file.content) && isReadableByAll(file.path)) {
            lines.append(
                u"configuration file %1 holds a token or a password and can be read by every user "
                "of this machine; `chmod o-r` ends that"_s.arg(file.path));
        }
    }
    return lines;
}

} // namespace bram
