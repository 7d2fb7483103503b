// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/RequestNumbers.h"

#include <algorithm>
#include <ranges>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype rememberedGone = 1000;
} // namespace

int RequestNumbers::give(const QString &approvalId)
{
    Shown &shown = m_shown[approvalId];
    if (shown.number == 0) {
        shown.number = ++m_lastNumber;
    }
    return shown.number;
}

void RequestNumbers::show(const ApprovalItem &item, DialogueMoment shownBy, ShownExtent extent)
{
    give(item.approvalId);
    Shown &shown = m_shown[item.approvalId];
    if (!shown.item
        || !isSameQuestion(*shown.item, item)) { // else: seen before, and still seen since then
        shown.item = item;
        shown.at = shownBy;
        shown.wholeAt.reset();
    }
    if (extent == ShownExtent::Whole && !shown.wholeAt) {
        shown.wholeAt = shownBy;
    }
}

bool RequestNumbers::isShown(const ApprovalItem &item) const
{
    const auto it = m_shown.constFind(item.approvalId);
    return it != m_shown.cend() && it->item && isSameQuestion(*it->item, item);
}

bool RequestNumbers::isChanged(const ApprovalItem &item) const
{
    const auto it = m_shown.constFind(item.approvalId);
    return it != m_shown.cend() && it->item && !isSameQuestion(*it->item, item);
}

std::optional<int> RequestNumbers::number(const QString &approvalId) const
{
    if (const auto it = m_shown.constFind(approvalId); it != m_shown.cend()) {
        return it->number;
    }
    for (const Gone &gone : m_gone | std::views::reverse) {
        if (gone.approvalId == approvalId) {
            return gone.number;
        }
    }
    return std::nullopt;
}

void RequestNumbers::forget(const QString &approvalId, DialogueMoment goneAt)
{
    const auto it = m_shown.constFind(approvalId);
    if (it == m_shown.cend()) {
        return;
    }
    if (m_gone.size() == rememberedGone) {
        m_gone.removeFirst();
    }
    m_gone.append({it->number, approvalId, goneAt});
    m_shown.erase(it);
}

std::optional<int> RequestNumbers::numberMeant(const QString &text) const
{
    const QString digits = text.startsWith(u'#') ? text.sliced(1) : text;
    if (digits.isEmpty()
        || !std::ranges::all_of(digits, [](QChar c) { return c >= u'0' && c <= u'9'; })) {
        return std::nullopt;
    }
    bool inRange = false;
    const int number = digits.toInt(&inRange);
    return inRange && number <= m_lastNumber ? number : 0;
}

RequestLookup RequestNumbers::findNumbered(const QString &text, int number,
                                           const QList<ApprovalItem> &pending,
                                           DialogueMoment begunAt) const
{
    using Kind = RequestLookup::Kind;
    const ApprovalItem *numbered = nullptr;
    const ApprovalItem *exact = nullptr;
    for (const ApprovalItem &item : pending) {
        const auto shown = m_shown.constFind(item.approvalId);
        if (number > 0 && shown != m_shown.cend() && shown->number == number) {
            numbered = &item;
        }
        if (item.approvalId == text) {
            exact = &item;
        }
    }
    if (number == 0) {
        return exact ? RequestLookup {Kind::Found, *exact, 0} : RequestLookup {};
    }
    if (!numbered) {
        return {Kind::Gone, {}, number}; // also where another request has the text for its id
    }
    const bool wasIdToo = std::ranges::any_of(
        m_gone, [&](const Gone &gone) { return gone.at > begunAt && gone.approvalId == text; });
    if ((exact && exact != numbered) || wasIdToo) {
        return {Kind::Ambiguous, {}, 0};
    }
    return {Kind::Found, *numbered, 0};
}

RequestLookup RequestNumbers::find(const QString &text, const QList<ApprovalItem> &pending,
                                   DialogueMoment begunAt) const
{
    using Kind = RequestLookup::Kind;
    if (const auto number = numberMeant(text)) {
        return findNumbered(text, *number, pending, begunAt);
    }
    const ApprovalItem *begunWith = nullptr;
    qsizetype beginnings = 0;
    for (const ApprovalItem &item : pending) {
        if (item.approvalId == text) {
            return {Kind::Found, item, 0};
        }
        if (item.approvalId.startsWith(text)) {
            begunWith = &item;
            ++beginnings;
        }
    }
    int goneNumber = 0;
    for (const Gone &gone : m_gone) {
        if (gone.at > begunAt && gone.approvalId.startsWith(text)) {
            ++beginnings;
        }
        if (gone.approvalId.startsWith(text) && (gone.at > begunAt || gone.approvalId == text)) {
            goneNumber = gone.number;
        }
    }
    if (beginnings > 1) {
        return {Kind::Ambiguous, {}, 0};
    }
    if (begunWith) {
        return {Kind::Found, *begunWith, 0};
    }
    return {goneNumber == 0 ? Kind::Unknown : Kind::Gone, {}, goneNumber};
}

Answerability RequestNumbers::answerability(const ApprovalItem &item, DialogueMoment begunAt) const
{
    const auto it = m_shown.constFind(item.approvalId);
    if (it == m_shown.cend() || !it->item) {
        return Answerability::NotShown;
    }
    if (!isSameQuestion(*it->item, item)) {
        return Answerability::ChangedSinceShown;
    }
    if (it->at > begunAt) {
        return Answerability::ShownSince;
    }
    return it->wholeAt && *it->wholeAt <= begunAt ? Answerability::Answerable
                                                  : Answerability::ShownInPart;
}

} // namespace bram
