// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "ui/terminal/RequestNumbers.h"

#include <algorithm>

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

/// The first line of the input is what is typed, the others are requests; those that begin with "-" went
/// away before the line was begun.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QStringList lines = fuzz::toText(fuzz::toBytes(data, size)).split(u'\n');
    const QString typed = lines.first().simplified();
    if (typed.isEmpty()) {
        return 0; // no command line names nothing
    }
    RequestNumbers numbers;
    QList<ApprovalItem> pending;
    for (QString id : lines.sliced(1)) {
        const bool gone = id.startsWith(u'-');
        id.remove(0, gone ? 1 : 0);
        const bool known = std::ranges::any_of(
            pending, [&id](const auto &item) { return item.approvalId == id; });
        if (known) {
            continue;
        }
        const ApprovalItem item {id, u"ls"_s, std::nullopt, 0, 0};
        numbers.show(item, 1);
        if (gone) {
            numbers.forget(id, 2);
        } else {
            pending.append(item);
        }
    }

    const RequestLookup lookup = numbers.find(typed, pending, 3);
    if (lookup.kind != RequestLookup::Kind::Found) {
        return 0;
    }
    require(pending.contains(lookup.item), "what is found is pending");
    const QString &id = lookup.item.approvalId;
    const QString digits = typed.startsWith(u'#') ? typed.sliced(1) : typed;
    const bool isNumber = !digits.isEmpty()
        && std::ranges::all_of(digits, [](QChar c) { return c >= u'0' && c <= u'9'; });
    if (isNumber) {
        const bool byNumber = digits.toInt() == *numbers.number(id);
        require(byNumber || id == typed, "digits name a number or a whole id");
        require(
            id == typed
                || std::ranges::none_of(
                    pending, [&](const ApprovalItem &item) { return item.approvalId == typed; }),
            "no other request has what was typed as its id");
        return 0;
    }
    require(id.startsWith(typed), "what is found was named");
    const auto fitting = std::ranges::count_if(
        pending, [&](const ApprovalItem &item) { return item.approvalId.startsWith(typed); });
    require(id == typed || fitting == 1, "what is found is the only one that could be meant");
    return 0;
}
