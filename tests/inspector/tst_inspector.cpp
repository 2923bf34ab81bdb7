// The local service's inspector page in a real browser (headless Chromium through WebDriver):
// what the library does shows without a reload, a preference switched on the page is what the
// library reads next, a fault set on the page is what the library's next call meets, and a value
// holding markup shows as text.
#include "localservice.h"
#include "webdriver.h"

#include <Brevanti/BVT.h>
#include <Brevanti/Client.h>
#include <Brevanti/Reply.h>

#include <QtTest>

namespace {

// The reply of a client call once it has finished.
bvt::Reply *finished(bvt::Reply *reply)
{
    reply->setAutoDelete(false);
    QSignalSpy done(reply, &bvt::Reply::finished);
    if (!reply->isFinished())
        done.wait(30000);
    return reply;
}

} // namespace

class TestInspector : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        for (const char *key : {"BVTDeviceId", "BVTUserId", "BVTDeviceToken"})
            QSettings().remove(QStringLiteral("com.brevanti.ios.") + key);
        m_local.service().setAdminEnabled(true);
        QVERIFY2(m_browser.error().isEmpty(), qPrintable(m_browser.error()));
        m_browser.open(m_local.service().baseUrl().toString() + "/_sim/inspector");
        QTRY_COMPARE_WITH_TIMEOUT(text("#status"), "Live", 30000);
    }

    void registrationShowsWithoutAReload()
    {
        std::unique_ptr<bvt::Reply> reply(
                finished(bvt::Client::instance()->initialise("test-client", "test-secret")));
        QCOMPARE(reply->error(), bvt::Reply::NoError);
        QTRY_VERIFY(text("#devices tbody").contains(BVT::currentDevice()));
        QTRY_VERIFY(text("#requests tbody").contains("/devices"));
        // A description holding markup is text on the page, never markup.
        BVT::postUrl("/devices",
                     {{"device",
                       QVariantMap{{"model", "<script>document.title='owned'</script>"},
                                   {"os", "<b>bold</b>"},
                                   {"os_version", "1"},
                                   {"manufacturer", "&amp;"}}}},
                     nullptr, nullptr);
        QTRY_VERIFY(text("#devices tbody").contains("<script>document.title='owned'</script>")
                    && text("#devices tbody").contains("&amp;"));
        QCOMPARE(m_browser
                         .run("return document.querySelectorAll('#devices script, #devices b')"
                              ".length")
                         .toInt(-1),
                 0);
        QCOMPARE(m_browser.run("return document.title").toString(), "Brevanti local service");
    }

    void switchOnThePageIsWhatTheLibraryReads()
    {
        const QString device = BVT::currentDevice();
        const QJsonArray before = m_local.service().preferenceDocument(device);
        m_browser.run(QString("document.querySelector(\"input[data-owner='device'][data-id='%1']\")"
                              ".click()")
                              .arg(device));
        QTRY_VERIFY(m_local.service().preferenceDocument(device) != before);
        std::unique_ptr<bvt::Reply> fetched(finished(bvt::Client::instance()->fetchPreferences()));
        QCOMPARE(QJsonValue::fromVariant(fetched->answer()),
                 QJsonValue(m_local.service().preferenceDocument(device)));
    }

    void faultSetOnThePageMeetsTheNextCall()
    {
        m_browser.run("const form = document.getElementById('fault');"
                      "form.elements.path.value = '/preferences';"
                      "form.elements.status.value = '503';"
                      "form.elements.body.value = 'down for the test';"
                      "form.requestSubmit()");
        QTRY_VERIFY(text("#fault-result").startsWith("Fault added")
                    && text("#faults tbody").contains("down for the test"));
        std::unique_ptr<bvt::Reply> fetched(finished(bvt::Client::instance()->fetchPreferences()));
        QCOMPARE(fetched->httpStatus(), 503);
        QCOMPARE(fetched->answerText(), "down for the test");
        // The page shows the request with its answer, filtered by path.
        m_browser.run("const filter = document.getElementById('filter');"
                      "filter.value = '/preferences'; filter.dispatchEvent(new Event('input'))");
        QTRY_VERIFY(text("#requests tbody").contains("down for the test"));
        QVERIFY(!text("#requests tbody").contains("/devices"));
        // The README's picture of the page (scripts/readme-pictures).
        if (const QString picture = qEnvironmentVariable("BREVANTI_INSPECTOR_PICTURE");
            !picture.isEmpty()) {
            QFile file(picture);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(m_browser.screenshot()) > 0);
        }
        m_local.reset();
    }

private:
    QString text(const QString &css)
    {
        return m_browser
                .run(QString("const e = document.querySelector(\"%1\");"
                             "return e ? e.textContent : ''")
                             .arg(css))
                .toString();
    }
    LocalService m_local;
    WebDriver m_browser;
};

QTEST_GUILESS_MAIN(TestInspector)

#include "tst_inspector.moc"
