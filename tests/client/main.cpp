#include "tst_accesstoken.h"
#include "tst_formencoding.h"
#include "tst_requests.h"

#include <QCoreApplication>
#include <QTest>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
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
