// SPDX-License-Identifier: Apache-2.0
#include "monitor/TrialNotification.h"

#include "audit/Redaction.h"
#include "model/HonestDisplay.h"
#include "system/NotificationService.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString trialTag = u"trial"_s;
} // namespace

TrialNotification::TrialNotification(NotificationService &service)
    : m_service(service)
{
    connect(&service, &NotificationService::shown, this, [this](const QString &tag) {
        if (tag == trialTag) {
            setOutcome(Outcome::Shown);
        }
    });
    connect(&service, &NotificationService::failed, this,
            [this](const QString &tag, const QString &reason) {
                if (tag == trialTag) {
                    setOutcome(Outcome::Failed, honestLine(redacted(reason)).text);
                    // Nobody wants it any more when the service returns.
                    m_service.withdraw(trialTag);
                }
            });
}

TrialNotification::~TrialNotification()
{
    withdraw();
}

void TrialNotification::withdraw()
{
    m_service.withdraw(trialTag);
    if (m_outcome != Outcome::None) {
        setOutcome(Outcome::None);
    }
}

void TrialNotification::send()
{
    setOutcome(Outcome::Sent);
    m_service.withdraw(trialTag);
    m_service.show({.tag = trialTag,
                    .title = tr("Test notification"),
                    .body = tr("A request for approval would be shown like this."),
                    .category = u"exec-approval"_s,
                    .isUrgent = false,
                    .actions = {}});
}

void TrialNotification::setOutcome(Outcome outcome, const QString &reason)
{
    m_outcome = outcome;
    m_reason = reason;
    Q_EMIT outcomeChanged();
}

} // namespace bram
