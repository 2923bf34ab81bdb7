#pragma once

#include "localservice.h"
#include "logcapture.h"

#include <QObject>

#include <memory>

class TestRequests : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void eachVerbSendsItsOwnHeaders_data();
    void eachVerbSendsItsOwnHeaders();
    void logLinesComeInOrder_data();
    void logLinesComeInOrder();
    void pathIsJoinedToTheOriginAsItStands();
    void failedAnswersHandTheBodyTextToFailure_data();
    void failedAnswersHandTheBodyTextToFailure();
    void bearerIsReadWhenTheRequestGoesOut();
    void requestKeepsItsManagerAlive();
    void connectionsAreShared();

private:
    std::unique_ptr<LocalService> m_local;
    std::unique_ptr<LogCapture> m_log;
};
