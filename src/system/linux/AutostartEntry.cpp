// SPDX-License-Identifier: Apache-2.0
#include "system/linux/AutostartEntry.h"

#include "system/Files.h"
#include "system/SystemErrors.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qint64 longestEntry = 64 * 1024;
constexpr QStringView entryGroup = u"[Desktop Entry]";
constexpr QStringView hiddenKey = u"Hidden";
constexpr QStringView gnomeKey = u"X-GNOME-Autostart-enabled";
constexpr QStringView execKey = u"Exec";

/// The lines of a desktop entry. Only values of its main group are read and changed.
class EntryText
{
public:
    explicit EntryText(const QString &text)
        : m_lines(text.split(u'\n'))
    {
        const auto isGroup = [](const QString &line) { return line.startsWith(u'['); };
        const auto start = std::ranges::find_if(
            m_lines, [](const QString &line) { return line.trimmed() == entryGroup; });
        if (start != m_lines.end()) {
            m_begin = start - m_lines.begin() + 1;
            m_end = std::find_if(start + 1, m_lines.end(), isGroup) - m_lines.begin();
        }
    }

    bool isEntry() const { return m_begin > 0; }

    std::optional<QString> value(QStringView key) const
    {
        const qsizetype line = lineOf(key);
        return line < m_end ? std::optional(m_lines.at(line).section(u'=', 1).trimmed())
                            : std::nullopt;
    }

    void set(QStringView key, const QString &value)
    {
        const QString text = key.toString() + u'=' + value;
        const qsizetype line = lineOf(key);
        if (line < m_end) {
            m_lines[line] = text;
        } else {
            m_lines.insert(m_begin, text);
            ++m_end;
        }
    }

    QString text() const { return m_lines.join(u'\n'); }

private:
    qsizetype lineOf(QStringView key) const
    {
        qsizetype line = m_begin;
        while (line < m_end && m_lines.at(line).section(u'=', 0, 0).trimmed() != key) {
            ++line;
        }
        return line;
    }

    QStringList m_lines;
    qsizetype m_begin = 0;
    qsizetype m_end = 0; ///< behind the group's last line
};

QString entryFor(const QString &program)
{
    return u"[Desktop Entry]\n"
           "Type=Application\n"
           "Name=BRAM\n"
           "Comment=Allow or deny the shell commands of your agents\n"
           "Comment[ko]=에이전트의 셸 명령을 승인하거나 거부합니다\n"
           "Exec="_s
        + execValue(program)
        + u"\n"
          "Icon=bram\n"
          "Terminal=false\n"
          "StartupNotify=false\n"_s;
}

/// Also for one that is named without a folder.
bool isSameProgram(const QString &started, const QString &program)
{
    const QString path = started.contains(u'/') ? started : QStandardPaths::findExecutable(started);
    return path == program
        || (!path.isEmpty()
            && QFileInfo(path).canonicalFilePath() == QFileInfo(program).canonicalFilePath()
            && QFileInfo::exists(path));
}
} // namespace

const QString AutostartEntry::fileName = u"bram.desktop"_s;

AutostartEntry::Places AutostartEntry::Places::ofProcess()
{
    using Paths = QStandardPaths;
    const QString userFolder
        = Paths::writableLocation(Paths::GenericConfigLocation) + u"/autostart"_s;
    QStringList systemFolders;
    for (const QString &folder : Paths::standardLocations(Paths::GenericConfigLocation)) {
        systemFolders.append(folder + u"/autostart"_s);
    }
    systemFolders.removeAll(userFolder);
    return {.userFolder = userFolder,
            .systemFolders = systemFolders,
            .program = QCoreApplication::applicationFilePath()};
}

AutostartEntry::AutostartEntry(const Places &places)
    : m_places(places)
{
}

LoginStart::State AutostartEntry::state() const
{
    auto entry = load(m_places.userFolder);
    if (entry && !*entry) {
        entry = loadSystemEntry();
    }
    if (!entry) {
        return {.problem = entry.error().message};
    }
    return *entry ? stateOf(**entry) : State {};
}

LoginStart::State AutostartEntry::stateOf(const QString &entry) const
{
    const EntryText text(entry);
    const auto exec = text.value(execKey);
    if (!exec || text.value(hiddenKey) == u"true"_s || text.value(gnomeKey) == u"false"_s) {
        return {};
    }
    const QString started = programOfExec(*exec);
    return {.isOn = true,
            .otherProgram = isSameProgram(started, m_places.program) ? QString() : started};
}

std::expected<void, Error> AutostartEntry::setOn(bool isOn)
{
    return isOn ? switchOn() : switchOff();
}

std::expected<void, Error> AutostartEntry::switchOn()
{
    if (state() == State {.isOn = true}) {
        return {};
    }
    const auto existing = load(m_places.userFolder);
    if (!existing) {
        return std::unexpected(existing.error());
    }
    EntryText entry(existing->value_or(QString()));
    if (!entry.isEntry()) {
        return save(entryFor(m_places.program));
    }
    entry.set(execKey, execValue(m_places.program));
    for (const auto &[key, on] : {std::pair {hiddenKey, u"false"_s}, {gnomeKey, u"true"_s}}) {
        if (entry.value(key)) {
            entry.set(key, on);
        }
    }
    return save(entry.text());
}

std::expected<void, Error> AutostartEntry::switchOff()
{
    const auto existing = load(m_places.userFolder);
    if (!existing) {
        return std::unexpected(existing.error());
    }
    const auto ofSystem = loadSystemEntry();
    const bool isInSystem = !ofSystem || ofSystem->has_value();
    const QString ours = entryFor(m_places.program);
    if (*existing == ours && !isInSystem) {
        const EnglishErrorTexts english;
        QFile file(path());
        if (!file.remove()) {
            return std::unexpected(
                Error {u"cannot remove %1: %2"_s.arg(path(), file.errorString())});
        }
        return {};
    }
    if (!*existing && !isInSystem) {
        return {};
    }
    EntryText entry(existing->value_or(ours));
    if (!entry.isEntry()) {
        return {};
    }
    entry.set(hiddenKey, u"true"_s);
    return save(entry.text());
}

std::expected<std::optional<QString>, Error> AutostartEntry::load(const QString &folder) const
{
    const QString path = folder + u'/' + fileName;
    const QFileInfo file(path);
    if (!file.exists() && !file.isSymLink()) {
        return std::nullopt;
    }
    const auto content = readRegularFile(path, longestEntry);
    if (!content) {
        return std::unexpected(content.error());
    }
    return QString::fromUtf8(*content);
}

std::expected<std::optional<QString>, Error> AutostartEntry::loadSystemEntry() const
{
    for (const QString &folder : m_places.systemFolders) {
        auto entry = load(folder);
        if (!entry || *entry) {
            return entry;
        }
    }
    return std::nullopt;
}

std::expected<void, Error> AutostartEntry::save(const QString &entry) const
{
    if (const auto made = makePrivateFolder(m_places.userFolder); !made) {
        return made;
    }
    return writeWholeFile(path(), entry.toUtf8());
}

QString execValue(const QString &program)
{
    // Three rules, one over the other: a percent sign begins a field code, quotes protect what a shell would
    // take for something else, and every value of an entry has escapes of its own.
    QString word = program;
    word.replace(u'%', u"%%"_s);
    constexpr QStringView reserved = u" \t\n\"'\\><~|&;$*?#()`";
    const bool isPlain
        = std::ranges::none_of(word, [&](QChar letter) { return reserved.contains(letter); });
    if (!isPlain) {
        for (const QChar special : {u'\\', u'"', u'`', u'$'}) {
            word.replace(special, QString(u'\\') + special);
        }
        word = u'"' + word + u'"';
    }
    word.replace(u'\\', u"\\\\"_s);
    return word.replace(u'\n', u"\\n"_s).replace(u'\t', u"\\t"_s).replace(u'\r', u"\\r"_s);
}

QString programOfExec(const QString &value)
{
    QString line;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value.at(i) != u'\\' || i + 1 == value.size()) {
            line += value.at(i);
            continue;
        }
        const QChar escaped = value.at(++i);
        line += escaped == u's' ? QChar(u' ')
            : escaped == u'n'   ? QChar(u'\n')
            : escaped == u't'   ? QChar(u'\t')
            : escaped == u'r'   ? QChar(u'\r')
                                : escaped;
    }
    QString program;
    const bool isQuoted = line.startsWith(u'"');
    for (qsizetype i = isQuoted ? 1 : 0; i < line.size(); ++i) {
        QChar letter = line.at(i);
        if (letter == (isQuoted ? u'"' : u' ')) {
            break;
        }
        if (isQuoted && letter == u'\\' && i + 1 < line.size()) {
            letter = line.at(++i);
        }
        program += letter;
    }
    return program.replace(u"%%"_s, u"%"_s);
}

} // namespace bram
