// SPDX-License-Identifier: Apache-2.0
#include "telegram/ChatOutbox.h"

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype maxWaiting = 20;
} // namespace

QJsonObject chatMessage(qint64 chatId, const QString &text)
{
    // A preview would fetch an address that stands in a command. Two generations of the Bot API are told so.
    return {{u"chat_id"_s, chatId},
            {u"text"_s, text},
            {u"disable_web_page_preview"_s, true},
            {u"link_preview_options"_s, QJsonObject {{u"is_disabled"_s, true}}}};
}

ChatOutbox::ChatOutbox(qint64 chatId, const ChatTerms &terms)
    : m_chatId(chatId)
    , m_terms(terms)
{
}

void ChatOutbox::say(const QString &text)
{
    if (m_calls.size() < maxWaiting) {
        m_calls.enqueue({u"sendMessage"_s, chatMessage(m_chatId, text)});
    }
}

bool ChatOutbox::show(const TelegramApprovalEntry &entry)
{
    const WholeCommand whole = renderWholeCommand(entry, m_terms);
    const bool isUnderWay
        = std::ranges::any_of(m_calls, [&](const Call &call) { return call.shows == entry; });
    if (isUnderWay || m_calls.size() + whole.messages.size() > maxWaiting) {
        return false;
    }
    // Shown again, it has its buttons only at the newest place.
    end([&](const TelegramApprovalEntry &other) { return other.approvalId == entry.approvalId; });
    for (const QString &text : whole.messages) {
        m_calls.enqueue({u"sendMessage"_s, chatMessage(m_chatId, text), entry});
    }
    Call &last = m_calls.last();
    last.isLastPart = true;
    last.isWhole = whole.isWhole;
    if (const auto keys = renderDecisionKeys(entry, whole.isWhole, m_terms)) {
        last.payload.insert(u"reply_markup"_s, *keys);
    }
    return true;
}

void ChatOutbox::onSent(const Call &call, std::optional<qint64> messageId)
{
    // Keys below a chat are replaced by later ones; buttons stay.
    if (call.isLastPart && messageId && m_terms.mode == TelegramMode::Polling) {
        m_shown.insert(*messageId, {*call.shows, call.payload.value("text"_L1).toString()});
    }
}

void ChatOutbox::putBack(const Call &call)
{
    if (call.shows || call.method != "sendMessage"_L1) {
        m_calls.prepend(call);
    }
}

void ChatOutbox::onFailed(const Call &call)
{
    m_calls.removeIf([&](const Call &other) { return call.shows && other.shows == call.shows; });
}

void ChatOutbox::end(const std::function<bool(const TelegramApprovalEntry &)> &isOutdated)
{
    m_calls.removeIf([&](const Call &call) { return call.shows && isOutdated(*call.shows); });
    for (auto shown = m_shown.begin(); shown != m_shown.end();) {
        if (!isOutdated(shown->entry)) {
            ++shown;
            continue;
        }
        QJsonObject edit = chatMessage(m_chatId, shown->text);
        edit.insert(u"message_id"_s, shown.key());
        m_calls.enqueue({u"editMessageText"_s, edit});
        shown = m_shown.erase(shown);
    }
}

} // namespace bram
