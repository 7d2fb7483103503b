// SPDX-License-Identifier: Apache-2.0
#include "monitor/AlwaysAllowInquiry.h"

#include "allowlist/AlwaysAllowList.h"
#include "allowlist/CommandDigest.h"
#include "audit/AuditLogStore.h"
#include "monitor/ApprovalBoard.h"
#include "system/BackgroundTasks.h"
#include "system/Clock.h"

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// What was answered since the log was read is taken from the history, which holds the latest only.
constexpr qint64 logIsGoodForMs = 60'000;
} // namespace

AlwaysAllowInquiry::AlwaysAllowInquiry(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_isCancelled(std::make_shared<std::atomic<bool>>(false))
{
}

AlwaysAllowInquiry::~AlwaysAllowInquiry()
{
    *m_isCancelled = true;
}

void AlwaysAllowInquiry::ask(const QString &digest)
{
    if (std::exchange(m_digest, digest) != digest) {
        m_places.reset();
    }
    if (digest.isEmpty()) {
        return;
    }
    m_collaborators.tasks.spawn(findPlaces(this, digest), u"always-allow places"_s);
    const bool isLogOld
        = !m_answers || m_collaborators.clock.nowMs() - m_logReadAtMs >= logIsGoodForMs;
    if (isLogOld && !m_isReadingLog) {
        m_collaborators.tasks.spawn(readLog(this), u"always-allow answers"_s);
    }
}

AlwaysAllowInquiry::Facts AlwaysAllowInquiry::facts() const
{
    Facts facts {.places = m_places, .isLogRead = m_answers.has_value()};
    facts.lastAnswerMs = lastAnswerInHistory();
    if (m_answers) {
        facts.lastAnswerMs = std::max(facts.lastAnswerMs, m_answers->lastAnswerMs(m_digest));
        facts.logSinceMs = m_answers->logSinceMs();
    }
    return facts;
}

/// Newest first, as the history is.
std::optional<qint64> AlwaysAllowInquiry::lastAnswerInHistory() const
{
    for (const ApprovalHistoryEntry &row : m_collaborators.board.history()) {
        if (row.maker == DecisionMaker::AlwaysAllowList && row.updatedAt.isValid() && !row.isCut
            && normalizedCommandDigest(row.command) == m_digest) {
            return row.updatedAt.toMSecsSinceEpoch();
        }
    }
    return std::nullopt;
}

QCoro::Task<> AlwaysAllowInquiry::findPlaces(Self self, QString digest)
{
    using Places = QList<ExecApprovalsPlace>;
    std::function<Places()> work = [folder = self->m_collaborators.list.platformFolder(), digest] {
        return findInExecApprovalsFiles(folder, digest);
    };
    const Places places = co_await self->m_worker.run<Places>({}, std::move(work));
    if (self && !*self->m_isCancelled && self->m_digest == digest && self->m_places != places) {
        self->m_places = places;
        Q_EMIT self->factsChanged();
    }
}

QCoro::Task<> AlwaysAllowInquiry::readLog(Self self)
{
    using Found = std::optional<AutomaticAnswers>;
    self->m_isReadingLog = true;
    const qint64 nowMs = self->m_collaborators.clock.nowMs();
    std::function<Found()> work
        = [&audit = self->m_collaborators.audit, &log = self->m_collaborators.log,
           isCancelled = self->m_isCancelled] {
              return AutomaticAnswers::find(audit.openLogFiles(), *isCancelled, log);
          };
    const Found found = co_await self->m_worker.run<Found>(std::nullopt, std::move(work));
    if (!self || *self->m_isCancelled) {
        co_return;
    }
    self->m_isReadingLog = false;
    if (found) {
        self->m_answers = found;
        self->m_logReadAtMs = nowMs;
        Q_EMIT self->factsChanged();
    }
}

} // namespace bram
