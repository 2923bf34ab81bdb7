#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QNetworkAccessManager>
#include <QProcess>
#include <QString>
#include <QUrl>

// A headless Chromium driven through WebDriver (Debian's chromedriver), for the page the local
// service serves. Every call waits for its answer in a local event loop, so the service, in this
// process, goes on answering the browser meanwhile.
class WebDriver
{
public:
    WebDriver();
    ~WebDriver();
    WebDriver(const WebDriver &) = delete;
    WebDriver &operator=(const WebDriver &) = delete;

    // Empty once a browser session runs; else why there is none.
    QString error() const { return m_error; }

    void open(const QUrl &url);
    // Runs script in the page (a function body; `arguments` holds arguments) and gives what it
    // returns.
    QJsonValue run(const QString &script, const QJsonArray &arguments = {});
    QByteArray screenshot(); // PNG

private:
    QJsonValue call(const QByteArray &method, const QString &path, const QJsonObject &body = {});

    QProcess m_driver;
    QNetworkAccessManager m_network;
    QUrl m_base;
    QString m_session;
    QString m_error;
};
