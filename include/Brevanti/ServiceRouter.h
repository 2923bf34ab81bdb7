#pragma once

/// \file
/// bvt::ServiceRouter, which sends the service's requests to another origin.

#include <Brevanti/brevanti_core_export.h>

#include <QNetworkAccessManager>
#include <QUrl>

#include <memory>

namespace bvt {

/// A network access manager that sends the library's requests for the service to another origin,
/// such as the local service during development:
///
///     bvt::setNetworkAccessManager(new bvt::ServiceRouter(QUrl("http://127.0.0.1:8080"), &app));
///
/// Only the scheme, host and port change; the path and query go out as the library built them.
/// Requests for any other origin go out unchanged.
class BREVANTI_CORE_EXPORT ServiceRouter : public QNetworkAccessManager
{
    Q_OBJECT
public:
    /// Routes to destination, of which only the scheme, host and port are used.
    explicit ServiceRouter(const QUrl &destination, QObject *parent = nullptr);
    ~ServiceRouter() override;

    /// Where the service's requests go, as given.
    QUrl destination() const;

protected:
    QNetworkReply *createRequest(Operation op, const QNetworkRequest &request,
                                 QIODevice *outgoingData) override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
