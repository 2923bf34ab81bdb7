#pragma once

#include "localservice.h"
#include "logcapture.h"

#include <QObject>

#include <memory>

class TestFormEncoding : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();

    void parametersTravelAsExactBytes_data();
    void parametersTravelAsExactBytes();
    void queryIsAddedToAPathThatHasOne();

private:
    std::unique_ptr<LocalService> m_local;
    LogCapture m_quiet; // the library's log is checked elsewhere
};
