#include "webdriver.h"

#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTest>

WebDriver::WebDriver()
{
    const QString driver = QStandardPaths::findExecutable(QStringLiteral("chromedriver"));
    if (driver.isEmpty()) {
        m_error = QStringLiteral("chromedriver is not installed (Debian: chromium-driver)");
        return;
    }
    QTcpServer probe; // a free port for the driver
    probe.listen(QHostAddress::LocalHost);
    const quint16 port = probe.serverPort();
    probe.close();
    m_base = QUrl(QStringLiteral("http://127.0.0.1:%1").arg(port));
    m_driver.start(driver, {QStringLiteral("--port=%1").arg(port)});
    m_driver.waitForStarted();
    // The driver answers its status once it listens; it exits at once when it cannot.
    for (int tries = 0; tries < 200 && m_driver.state() == QProcess::Running; ++tries) {
        if (call("GET", QStringLiteral("/status")).toObject().value("ready").toBool())
            break;
        QTest::qWait(50);
    }
    m_error.clear();
    const QJsonObject options{{"args",
                               QJsonArray{"--headless=new", "--no-sandbox", "--disable-gpu",
                                          "--disable-dev-shm-usage", "--ignore-certificate-errors",
                                          "--window-size=1280,1000"}}};
    const QJsonObject capabilities{
            {"alwaysMatch",
             QJsonObject{{"browserName", "chrome"}, {"goog:chromeOptions", options}}}};
    const QJsonValue session =
            call("POST", QStringLiteral("/session"), {{"capabilities", capabilities}});
    m_session = session.toObject().value("sessionId").toString();
    if (m_session.isEmpty() && m_error.isEmpty())
        m_error =
                QStringLiteral("no browser session: ") + QJsonDocument(session.toObject()).toJson();
}

WebDriver::~WebDriver()
{
    if (!m_session.isEmpty())
        call("DELETE", QStringLiteral("/session/") + m_session);
    m_driver.terminate();
    m_driver.waitForFinished(5000);
}

void WebDriver::open(const QUrl &url)
{
    call("POST", QStringLiteral("/session/%1/url").arg(m_session), {{"url", url.toString()}});
}

QJsonValue WebDriver::run(const QString &script, const QJsonArray &arguments)
{
    return call("POST", QStringLiteral("/session/%1/execute/sync").arg(m_session),
                {{"script", script}, {"args", arguments}});
}

QByteArray WebDriver::screenshot()
{
    return QByteArray::fromBase64(
            call("GET", QStringLiteral("/session/%1/screenshot").arg(m_session))
                    .toString()
                    .toLatin1());
}

QJsonValue WebDriver::call(const QByteArray &method, const QString &path, const QJsonObject &body)
{
    QNetworkRequest request(m_base.resolved(QUrl(path)));
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
    request.setTransferTimeout(60000); // a driver that hangs still ends the call
    QNetworkReply *reply = m_network.sendCustomRequest(
            request, method, method == "GET" ? QByteArray() : QJsonDocument(body).toJson());
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    reply->deleteLater();
    const QJsonObject answer = QJsonDocument::fromJson(reply->readAll()).object();
    const QJsonValue value = answer.value("value");
    if (reply->error() != QNetworkReply::NoError)
        m_error = QStringLiteral("%1 %2: %3 %4")
                          .arg(QString::fromLatin1(method), path, reply->errorString(),
                               value.toObject().value("message").toString());
    return value;
}
