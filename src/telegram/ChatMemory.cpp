// SPDX-License-Identifier: Apache-2.0
#include "telegram/ChatMemory.h"

#include <QCryptographicHash>
#include <QSet>

#include <utility>

namespace bram
{

namespace
{
/// Telegram's dates are whole seconds.
constexpr qint64 toleranceMs = 2'000;
/// As long as nothing is known of its clock but that it is right.
constexpr qint64 toleranceBetweenClocksMs = 10'000;
constexpr qint64 msPerSecond = 1000;

QByteArray formOf(const TelegramApprovalEntry &entry)
{
    const auto bytesOf = [](const QString &text) {
        return QByteArrayView(reinterpret_cast<const char *>(text.constData()),
                              text.size() * qsizetype(sizeof(QChar)));
    };
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (entry.agentId) {
        hash.addData(QByteArray::number(entry.agentId->size()) + ':');
        hash.addData(bytesOf(*entry.agentId));
    }
    hash.addData(QByteArrayView("/"));
    hash.addData(bytesOf(entry.command));
    return hash.result();
}
} // namespace

void ChatMemory::update(const QList<TelegramApprovalEntry> &entries, qint64 nowMs)
{
    QHash<QString, Given> given;
    for (const TelegramApprovalEntry &entry : entries) {
        given.insert(entry.approvalId, m_given.value(entry.approvalId, Given {.firstMs = nowMs}));
    }
    m_given = given;
}

bool ChatMemory::noteShownWhole(const TelegramApprovalEntry &entry)
{
    const auto known = m_given.find(entry.approvalId);
    if (known == m_given.end()) {
        return false;
    }
    const QByteArray form = formOf(entry);
    return std::exchange(known->wholeForm, form) != form;
}

void ChatMemory::takeBackShownWhole(const TelegramApprovalEntry &entry)
{
    if (wasShownWhole(entry)) {
        m_given[entry.approvalId].wholeForm.clear();
    }
}

void ChatMemory::noteServerTime(qint64 serverSeconds, qint64 nowMs)
{
    qint64 serverMs = 0;
    if (serverSeconds > 0 && !qMulOverflow(serverSeconds, msPerSecond, &serverMs)) {
        m_serverAheadMs = serverMs - nowMs;
    }
}

bool ChatMemory::wasShownWhole(const TelegramApprovalEntry &entry) const
{
    const auto known = m_given.constFind(entry.approvalId);
    return known != m_given.constEnd() && !known->wholeForm.isEmpty()
        && known->wholeForm == formOf(entry);
}

bool ChatMemory::isOlderThan(const QString &approvalId, qint64 serverSeconds) const
{
    const auto known = m_given.constFind(approvalId);
    if (known == m_given.constEnd()) {
        return true;
    }
    const qint64 firstAtServerMs = m_serverAheadMs ? known->firstMs + *m_serverAheadMs - toleranceMs
                                                   : known->firstMs - toleranceBetweenClocksMs;
    return serverSeconds < firstAtServerMs / msPerSecond;
}

} // namespace bram
