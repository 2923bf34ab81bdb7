#pragma once

#include <QNetworkAccessManager>
#include <QUrl>

namespace bvtsim {

// A network access manager that sends every request for one origin to another one, so that a
// client built for the hosted service talks to the local service without knowing it.
class LoopbackRouter : public QNetworkAccessManager
{
    Q_OBJECT
public:
    LoopbackRouter(const QUrl &from, const QUrl &to, QObject *parent = nullptr);

protected:
    QNetworkReply *createRequest(Operation op, const QNetworkRequest &request,
                                 QIODevice *outgoingData) override;

private:
    QUrl m_from;
    QUrl m_to;
};

} // namespace bvtsim
