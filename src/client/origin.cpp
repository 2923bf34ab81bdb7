#include "origin.h"

namespace bvt {

namespace {

int effectivePort(const QUrl &url)
{
    return url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
}

} // namespace

QString serviceOrigin()
{
    return QStringLiteral(BREVANTI_ORIGIN);
}

bool sameOrigin(const QUrl &a, const QUrl &b)
{
    return a.scheme() == b.scheme() && a.host() == b.host() && effectivePort(a) == effectivePort(b);
}

bool staysWithin(const QUrl &url, const QUrl &origin)
{
    // Credentials in the URL are never the service's: the request would carry the caller's text.
    return url.isValid() && url.userInfo().isEmpty() && sameOrigin(url, origin);
}

} // namespace bvt
