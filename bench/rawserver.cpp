#include "rawserver.h"

#include <QDateTime>
#include <QEventLoop>
#include <QTcpServer>
#include <QTcpSocket>

#include <future>

namespace {

QByteArray jsonAnswer(const QByteArray &body)
{
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: "
            + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

const QByteArray fixedAnswer = jsonAnswer(R"({"status":"ok","items":[1,2,3]})");

// Issued now and valid for two hours, so that a client holds it for the whole run.
QByteArray tokenAnswer()
{
    return jsonAnswer(R"({"access_token":"raw-bench-token","expires_in":7200,"created_at":)"
                      + QByteArray::number(QDateTime::currentSecsSinceEpoch()) + "}");
}

qsizetype contentLength(const QByteArray &head)
{
    const QByteArray name = "\r\ncontent-length:";
    const QByteArray lower = head.toLower();
    const qsizetype at = lower.indexOf(name);
    if (at < 0)
        return 0;
    const qsizetype end = lower.indexOf("\r\n", at + name.size());
    return lower.mid(at + name.size(), end < 0 ? -1 : end - at - name.size())
            .trimmed()
            .toLongLong();
}

// Answers every complete request at the front of pending and leaves the rest for later.
void answerComplete(QByteArray &pending, QTcpSocket *socket)
{
    for (;;) {
        const qsizetype headEnd = pending.indexOf("\r\n\r\n");
        if (headEnd < 0)
            return;
        const QByteArray head = pending.left(headEnd);
        const qsizetype size = headEnd + 4 + contentLength(head);
        if (pending.size() < size)
            return;
        pending.remove(0, size);
        socket->write(head.startsWith("POST /oauth/token ") ? tokenAnswer() : fixedAnswer);
    }
}

class RawServer : public QTcpServer
{
protected:
    void incomingConnection(qintptr socketDescriptor) override;
};

void RawServer::incomingConnection(qintptr socketDescriptor)
{
    auto *socket = new QTcpSocket(this);
    socket->setSocketDescriptor(socketDescriptor);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    auto pending = std::make_shared<QByteArray>();
    connect(socket, &QTcpSocket::readyRead, socket, [socket, pending] {
        *pending += socket->readAll();
        answerComplete(*pending, socket);
    });
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
}

} // namespace

RawServerThread::RawServerThread()
{
    std::promise<QUrl> ready;
    auto started = ready.get_future();
    m_thread.reset(QThread::create([ready = std::move(ready)]() mutable {
        RawServer server;
        if (!server.listen(QHostAddress::LocalHost)) {
            ready.set_value(QUrl());
            return;
        }
        ready.set_value(QUrl(QStringLiteral("http://127.0.0.1:%1").arg(server.serverPort())));
        QEventLoop loop; // QThread::quit() ends it
        loop.exec();
    }));
    m_thread->start();
    m_baseUrl = started.get();
}

RawServerThread::~RawServerThread()
{
    m_thread->quit();
    m_thread->wait();
}
