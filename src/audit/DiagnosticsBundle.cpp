// SPDX-License-Identifier: Apache-2.0
#include "audit/DiagnosticsBundle.h"

#include "audit/AuditLogStore.h"
#include "audit/Redaction.h"
#include "audit/WeeklyAuditReport.h"
#include "model/UtcTime.h"
#include "system/Files.h"
#include "system/SystemErrors.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
using Step = std::expected<void, Error>;

constexpr QStringView englishReadme
    = u"BRAM diagnostics bundle\n"
      u"- snapshot.json: runtime state/settings/counters snapshot\n"
      u"- weekly-audit.md: last 7 days audit summary (with redaction)\n"
      u"- pending-approvals.txt: current pending approvals (with redaction)\n"
      u"- logs/: audit logs and debug state logs\n"
      u"\n"
      u"Note\n"
      u"- Tokens and passwords are redacted by default.\n"
      u"- Review contents before sharing externally.\n"
      u"- Redaction goes by rules: keys of well-known shapes, values of names such as TOKEN, "
      u"SECRET,\n"
      u"  PASSWORD or API_KEY, credentials in addresses and headers. It may mask more than that, "
      u"and it\n"
      u"  does not find a secret that looks like any other word.\n"
      u"- logs/ is copied as it is. The audit log holds programs' names, not their arguments.";
constexpr QStringView koreanReadme
    = u"BRAM 진단 번들\n"
      u"- snapshot.json: 실행 상태/설정/카운터 스냅샷\n"
      u"- weekly-audit.md: 최근 7일 감사 요약(민감정보 마스킹)\n"
      u"- pending-approvals.txt: 현재 대기 승인 내역(민감정보 마스킹)\n"
      u"- logs/: 감사 로그와 디버그 상태 로그\n"
      u"\n"
      u"주의\n"
      u"- 민감정보 토큰/비밀번호는 기본적으로 마스킹됩니다.\n"
      u"- 외부 공유 전 내용을 다시 확인하세요.\n"
      u"- 마스킹은 규칙에 따릅니다: 잘 알려진 형식의 키, TOKEN·SECRET·PASSWORD·API_KEY 같은 이름의 "
      u"값,\n"
      u"  주소와 헤더의 자격 증명. 그보다 더 가릴 수 있으며, 평범한 단어처럼 보이는 비밀은 찾지 "
      u"못합니다.\n"
      u"- logs/는 그대로 복사됩니다. 감사 로그에는 프로그램 이름만 있고 인수는 없습니다.";

std::unexpected<Error> systemFailure(const QString &path)
{
    const int errorNumber = errno;
    return std::unexpected(Error {u"%1: %2"_s.arg(path, systemErrorText(errorNumber))});
}

/// Makes a folder that was not there: what is in the bundle is for this user alone, whoever else may write to
/// where it is put. Two bundles of one second get different names.
std::expected<QString, Error> makeBundleFolder(const DiagnosticsBundle &bundle)
{
    if (const auto made = makePrivateFolder(bundle.parentFolder); !made) {
        return std::unexpected(made.error());
    }
    QString time = utcTime(bundle.nowMs).toString(Qt::ISODate);
    const QString path = QDir(bundle.parentFolder)
                             .absoluteFilePath(u"bram-diagnostics-"_s + time.replace(u':', u'-'));
    constexpr int maxOfOneSecond = 100;
    for (int i = 1; i <= maxOfOneSecond; ++i) {
        const QString free = i == 1 ? path : QString(path + u'-' + QString::number(i));
        if (::mkdir(QFile::encodeName(free).constData(), 0700) == 0) {
            return free;
        }
        if (errno != EEXIST) {
            return systemFailure(free);
        }
    }
    return systemFailure(path);
}

Step copyBytes(int source, int target, std::size_t size, AggregationProgress &progress,
               const QString &targetPath)
{
    std::array<char, 65'536> buffer;
    for (std::size_t offset = 0; offset < size && !progress.isCancelled;) {
        const auto count = ::pread(source, buffer.data(), std::min(buffer.size(), size - offset),
                                   static_cast<off_t>(offset));
        if (count <= 0) {
            return count == 0 ? Step() : systemFailure(targetPath);
        }
        for (ssize_t written = 0; written < count;) {
            const auto more = ::write(target, buffer.data() + written,
                                      static_cast<std::size_t>(count - written));
            if (more < 0) {
                return systemFailure(targetPath);
            }
            written += more;
        }
        offset += static_cast<std::size_t>(count);
        progress.bytesDone += static_cast<std::size_t>(count);
    }
    return {};
}

Step copyLog(const AuditLogFile &file, const QString &folder, AggregationProgress &progress)
{
    const QString target = folder + u'/' + QFile::decodeName(file.path().filename().c_str());
    const int descriptor = ::open(QFile::encodeName(target).constData(),
                                  O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        return systemFailure(target);
    }
    const Step copied = copyBytes(file.descriptor(), descriptor, file.size(), progress, target);
    if (::close(descriptor) != 0 && copied) {
        return systemFailure(target);
    }
    return copied;
}

/// For a file in a folder where everybody may write: only one that this user has made, and no link, which could
/// lead to any file of this user's.
Step copyFileIfExists(const QString &path, const QString &folder, AggregationProgress &progress)
{
    struct stat named = {};
    if (::lstat(QFile::encodeName(path).constData(), &named) != 0 || !S_ISREG(named.st_mode)
        || named.st_uid != ::geteuid()) {
        return {};
    }
    const auto file = AuditLogFile::open(QFile::encodeName(path).toStdString());
    struct stat opened = {};
    if (!file || ::fstat(file->descriptor(), &opened) != 0 || opened.st_dev != named.st_dev
        || opened.st_ino != named.st_ino) {
        return {};
    }
    return copyLog(*file, folder, progress);
}

class BundleWriter
{
public:
    BundleWriter(const DiagnosticsBundle &bundle, QString folder, AggregationProgress &progress)
        : m_bundle(bundle)
        , m_folder(std::move(folder))
        , m_progress(progress)
    {
    }

    Step write(AuditLogStore &store, SystemLog &log)
    {
        const QString logs = m_folder + u"/logs"_s;
        if (::mkdir(QFile::encodeName(logs).constData(), 0700) != 0) {
            return systemFailure(logs);
        }
        put(u"snapshot.json"_s, m_bundle.snapshot);
        const auto files = store.openLogFiles();
        for (const AuditLogFile &file : files) {
            m_progress.bytesTotal += file.size();
        }
        const auto report
            = weeklyAuditReport(files, m_bundle.nowMs, m_bundle.language, m_progress, log);
        if (report) {
            put(u"weekly-audit.md"_s, redacted(*report).toUtf8());
        }
        put(u"pending-approvals.txt"_s, m_bundle.pendingText.toUtf8());
        for (const AuditLogFile &file : files) {
            then([&] { return copyLog(file, logs, m_progress); });
        }
        then([&] { return copyFileIfExists(m_bundle.stateLog, logs, m_progress); });
        const bool korean = m_bundle.language == MenuLanguage::Korean;
        put(u"README.txt"_s, (korean ? koreanReadme : englishReadme).toUtf8());
        return m_step;
    }

private:
    /// The next step, if everything went well so far.
    template<typename Next>
    void then(Next next)
    {
        if (m_step && !m_progress.isCancelled) {
            m_step = next();
        }
    }

    void put(const QString &name, const QByteArray &content)
    {
        then([&] { return writeWholeFile(m_folder + u'/' + name, content); });
    }

    const DiagnosticsBundle &m_bundle;
    const QString m_folder;
    AggregationProgress &m_progress;
    Step m_step;
};
} // namespace

std::optional<std::expected<QString, Error>> writeDiagnosticsBundle(const DiagnosticsBundle &bundle,
                                                                    AuditLogStore &store,
                                                                    AggregationProgress &progress,
                                                                    SystemLog &log)
{
    const auto folder = makeBundleFolder(bundle);
    if (!folder) {
        return folder;
    }
    const Step written = BundleWriter(bundle, *folder, progress).write(store, log);
    if (progress.isCancelled) {
        QDir(*folder).removeRecursively();
        return std::nullopt;
    }
    if (!written) {
        return std::unexpected(written.error());
    }
    return folder;
}

} // namespace bram
