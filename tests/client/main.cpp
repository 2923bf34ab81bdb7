#include "tst_accesstoken.h"
#include "tst_formencoding.h"
#include "tst_requests.h"

#include "core/userdefaults.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QTest>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    // A device registered before, so that each new manager leaves the service alone.
    bvt::UserDefaults::standardUserDefaults().setObject(
            QStringLiteral("registered-device"), QStringLiteral("com.brevanti.ios.BVTDeviceId"));
    int failures = 0;
    {
        TestAccessToken test;
        failures += QTest::qExec(&test, argc, argv);
    }
    {
        TestRequests test;
        failures += QTest::qExec(&test, argc, argv);
    }
    {
        TestFormEncoding test;
        failures += QTest::qExec(&test, argc, argv);
    }
    return failures == 0 ? 0 : 1;
}
