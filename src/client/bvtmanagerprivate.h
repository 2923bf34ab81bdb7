#pragma once

#include <Brevanti/BVTManager.h>

#include <QDateTime>
#include <QString>
#include <QUrl>

// A manager's state, shared by the files that make up BVTManager.
class BVTManager::Private
{
public:
    void updateBasicCredentials();
    bool holdsValidToken() const;
    // The origin parsed, once for each value it takes.
    const QUrl &originUrl() const;

    QString clientId;
    QString clientSecret;
    QString basicCredentials; // Base64 of "id:secret", kept with them: every GET logs it
    QString origin;
    QString accessToken;
    QDateTime accessTokenExpires;
    QString currentUser;

private:
    mutable QString m_parsedOrigin;
    mutable QUrl m_originUrl;
};
