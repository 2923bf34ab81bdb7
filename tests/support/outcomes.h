#pragma once

#include "logcapture.h"

#include <Brevanti/BVTManager.h>

#include <QStringList>
#include <QVariantList>

// What the callbacks of the library's calls received, in the order they came.
struct Outcomes
{
    QVariantList answers;
    QStringList texts; // failure texts; a null one means no answer arrived
    QList<BVTError> errors;

    BVTSuccessBlock success()
    {
        return [this](const QVariant &answer) { answers.append(answer); };
    }
    BVTFailureBlock failure()
    {
        return [this](const QString &text) { texts.append(text); };
    }
    BVTErrorBlock error()
    {
        return [this](const BVTError &e) { errors.append(e); };
    }
    qsizetype count() const { return answers.size() + texts.size() + errors.size(); }
};

// A manager of the test client; its "Initializing device" line is not what tests check.
inline std::shared_ptr<BVTManager> newManager(const QString &id = QStringLiteral("test-client"),
                                              const QString &secret = QStringLiteral("test-secret"))
{
    auto manager = BVTManager::initWithLaunchOptions({}, id, secret);
    LogCapture::clear();
    return manager;
}

// Sends one request with the given verb ("GET", "POST" or "PATCH").
inline void call(const std::shared_ptr<BVTManager> &manager, const QByteArray &verb,
                 const QString &path, const BVTParameters &parameters, Outcomes &outcomes)
{
    const auto send = verb == "GET" ? &BVTManager::getUrl
            : verb == "POST"        ? &BVTManager::postUrl
                                    : &BVTManager::patchUrl;
    (manager.get()->*send)(path, parameters, outcomes.success(), outcomes.failure());
}
