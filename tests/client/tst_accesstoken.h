#pragma once

#include "localservice.h"
#include "logcapture.h"

#include <QObject>

#include <memory>

class TestAccessToken : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void cachedTokenIsUsedOnlyWhileStrictlyInTheFuture_data();
    void cachedTokenIsUsedOnlyWhileStrictlyInTheFuture();
    void tokenRequestCarriesTheClientCredentials();
    void expiryRestsOnTheServiceIssueTime();
    void tokenAnswerIsReadWithoutValidation_data();
    void tokenAnswerIsReadWithoutValidation();
    void everyCallWithoutTokenSendsItsOwnTokenRequest();
    void failedTokenRequestCallsFailureOnceAndLogsNothing_data();
    void failedTokenRequestCallsFailureOnceAndLogsNothing();

private:
    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
};
