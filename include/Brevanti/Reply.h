#pragma once

/// \file
/// bvt::Reply, the end of one call of bvt::Client.

#include <Brevanti/brevanti_core_export.h>

#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>

namespace bvt {

class Client;

/// The end of one call of bvt::Client, in the manner of QNetworkReply: it emits finished() exactly
/// once, always later than the call that made it returned, whatever happened: an answer, no access
/// token, an argument the library refused, a device not yet registered, a failed connection, an
/// abort(). Then error() says how it ended and answer() holds the service's decoded answer.
///
/// The client owns its replies. A reply deletes itself (deleteLater()) once finished() has been
/// emitted, so that a host that never looks at it leaks nothing; call setAutoDelete(false) before
/// it finishes to keep it, and delete it yourself. Deleting it earlier is allowed too: the call
/// then ends unheard.
class BREVANTI_CORE_EXPORT Reply : public QObject
{
    Q_OBJECT
    /// How the call ended; NoError until it has.
    Q_PROPERTY(bvt::Reply::Error error READ error NOTIFY finished)
    /// The HTTP status of the service's answer; 0 when none arrived.
    Q_PROPERTY(int httpStatus READ httpStatus NOTIFY finished)
    /// A sentence for a person: what went wrong, or an empty string.
    Q_PROPERTY(QString errorString READ errorString NOTIFY finished)
    /// The decoded answer (a QVariantMap or a QVariantList) of a call that succeeded.
    Q_PROPERTY(QVariant answer READ answer NOTIFY finished)
    /// The body of an answer that failed, as text; null when no answer arrived.
    Q_PROPERTY(QString answerText READ answerText NOTIFY finished)

public:
    /// How a call ended.
    enum Error {
        NoError,              ///< The service answered with success.
        NoAccessTokenError,   ///< No access token could be had: nothing was sent.
        HttpStatusError,      ///< The service answered with a status outside 200 to 299.
        NetworkError,         ///< No answer arrived, or it was cut short; see networkError().
        InvalidAnswerError,   ///< A 2xx answer that is not JSON, or not of a JSON content type.
        RefusedArgumentError, ///< The library refused an argument: nothing was sent.
        NotRegisteredError,   ///< The library is not initialised or the device has no
                              ///< identifier yet: nothing was sent.
        AbortedError,         ///< abort() ended it.
    };
    Q_ENUM(Error)

    ~Reply() override;

    /// Whether finished() was emitted.
    Q_INVOKABLE bool isFinished() const;
    /// The properties above.
    ///@{
    Error error() const;
    int httpStatus() const;
    QString errorString() const;
    QVariant answer() const;
    QString answerText() const;
    ///@}
    /// The QNetworkReply::NetworkError of the exchange, as an int; 0 when there was none.
    int networkError() const;

    /// Whether the reply deletes itself once finished (the default).
    ///@{
    bool autoDelete() const;
    void setAutoDelete(bool autoDelete);
    ///@}

    /// Calls functor with this reply once it has finished, unless context is gone by then: the
    /// same as connecting finished() to it with context.
    template<typename Functor>
    void then(const QObject *context, Functor functor)
    {
        connect(this, &Reply::finished, context, [this, functor] { functor(this); });
    }

public Q_SLOTS:
    /// Ends the call now with AbortedError, unless it has finished. A request already sent may
    /// still reach the service; what the service then accepts is still stored.
    void abort();

Q_SIGNALS:
    /// The call has ended; emitted exactly once.
    void finished();

private:
    friend class Client;
    class Private;

    explicit Reply(QObject *parent);

    const std::unique_ptr<Private> d;
};

} // namespace bvt
