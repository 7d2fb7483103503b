// SPDX-License-Identifier: Apache-2.0
#include "audit/WeeklyAuditAggregation.h"

#include "audit/AuditLineReader.h"
#include "audit/AuditLineScanner.h"

#include <QFile>

#include <algorithm>
#include <compare>
#include <string>
#include <thread>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// Where in the log a line stands. Later means newer, and of one millisecond further on in the log.
struct LinePlace {
    qint64 timestampMs = 0;
    std::size_t file = 0;
    std::size_t line = 0;

    auto operator<=>(const LinePlace &) const = default;
};

/// The latest lines of those offered, at most so many.
class LatestLines
{
public:
    struct Entry {
        LinePlace place;
        std::string line;
    };

    explicit LatestLines(qsizetype count)
        : m_count(static_cast<std::size_t>(std::max<qsizetype>(count, 0)))
    {
    }

    void offer(const LinePlace &place, std::string_view line)
    {
        if (m_entries.size() < m_count) {
            m_entries.push_back({place, std::string(line)});
        } else if (m_count > 0 && m_entries.front().place < place) {
            std::ranges::pop_heap(m_entries, isLater);
            m_entries.back().place = place;
            m_entries.back().line = line;
        } else {
            return;
        }
        std::ranges::push_heap(m_entries, isLater);
    }

    const std::vector<Entry> &entries() const { return m_entries; }

    /// Latest first.
    std::vector<Entry> takeSorted()
    {
        std::ranges::sort(m_entries, isLater);
        return std::move(m_entries);
    }

private:
    static bool isLater(const Entry &left, const Entry &right) { return right.place < left.place; }

    std::size_t m_count;
    std::vector<Entry> m_entries; ///< a heap, the earliest in front
};

/// The files that are left, for whoever has time for one. The last ones are the newest, after the current one:
/// they come first, so that few older lines are latest ones for a while only.
class FileQueue
{
public:
    explicit FileQueue(std::size_t count)
        : m_count(count)
    {
    }

    std::optional<std::size_t> next()
    {
        const std::size_t taken = m_taken++;
        if (taken >= m_count) {
            return std::nullopt;
        }
        return taken == 0 ? 0 : m_count - taken;
    }

private:
    const std::size_t m_count;
    std::atomic<std::size_t> m_taken = 0;
};

/// One thread's part.
class Aggregator
{
public:
    Aggregator(const std::vector<AuditLogFile> &files, const AggregationOptions &options,
               AggregationProgress &progress, SystemLog &log)
        : m_files(files)
        , m_options(options)
        , m_progress(progress)
        , m_log(log)
        , m_latest(options.maxRows)
    {
    }

    void run(FileQueue &queue)
    {
        while (!m_progress.isCancelled) {
            const auto index = queue.next();
            if (!index) {
                return;
            }
            readFile(*index);
        }
    }

    WeeklyAuditFold fold;

    LatestLines &latest() { return m_latest; }

private:
    void readFile(std::size_t index)
    {
        LinePlace place {.file = index};
        const auto consume = [&](std::string_view line) {
            ++place.line;
            const AuditEventView *event = m_scanner.scan(line);
            if (event == nullptr || event->timestampMs < m_options.sinceMs || event->isExercise()) {
                return;
            }
            fold.add(*event);
            if (event->isHighRisk()) {
                place.timestampMs = event->timestampMs;
                m_latest.offer(place, line);
            }
        };
        const auto advance = [this](std::size_t bytes) {
            m_progress.bytesDone += bytes;
            return !m_progress.isCancelled;
        };
        const AuditLogFile &file = m_files[index];
        if (const auto read = m_reader.read(file, consume, advance); !read) {
            const QString name = QFile::decodeName(file.path().c_str());
            logAuditFailure(m_log, u"read", u"%1: %2"_s.arg(name, read.error().message));
        }
    }

    const std::vector<AuditLogFile> &m_files;
    const AggregationOptions m_options;
    AggregationProgress &m_progress;
    SystemLog &m_log;
    LatestLines m_latest;
    AuditLineReader m_reader;
    AuditLineScanner m_scanner;
};

std::size_t sizeOfAll(const std::vector<AuditLogFile> &files)
{
    std::size_t bytes = 0;
    for (const AuditLogFile &file : files) {
        bytes += file.size();
    }
    return bytes;
}
} // namespace

std::optional<WeeklyAuditFindings> aggregateAuditLog(const std::vector<AuditLogFile> &files,
                                                     const AggregationOptions &options,
                                                     AggregationProgress &progress, SystemLog &log)
{
    progress.bytesTotal += sizeOfAll(files);
    FileQueue queue(files.size());
    const auto threads = std::clamp<std::size_t>(
        files.size(), 1, static_cast<std::size_t>(std::max(options.threads, 1)));
    std::vector<std::unique_ptr<Aggregator>> parts;
    for (std::size_t i = 0; i < threads; ++i) {
        parts.push_back(std::make_unique<Aggregator>(files, options, progress, log));
    }
    {
        std::vector<std::jthread> others;
        for (std::size_t i = 1; i < threads; ++i) {
            others.emplace_back([&queue, part = parts[i].get()] { part->run(queue); });
        }
        parts.front()->run(queue);
    }
    if (progress.isCancelled) {
        return std::nullopt;
    }
    Aggregator &whole = *parts.front();
    for (std::size_t i = 1; i < threads; ++i) {
        whole.fold.add(parts[i]->fold);
        for (const auto &entry : parts[i]->latest().entries()) {
            whole.latest().offer(entry.place, entry.line);
        }
    }
    WeeklyAuditFindings findings {.summary = whole.fold.summary()};
    AuditRecordDecoder decoder;
    for (const auto &entry : whole.latest().takeSorted()) {
        findings.highRiskRows.append(*decoder.decode(entry.line));
    }
    return findings;
}

} // namespace bram
