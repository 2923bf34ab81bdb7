#pragma once

#include <Brevanti/platform/ViewController.h>

#include <QString>

class QLabel;
class QPushButton;

// The demo's home screen: what the library knows about this phone (device, user, push token) and
// a button for each thing a host typically offers.
class HomeViewController : public bvt::ViewController
{
    Q_OBJECT
public:
    explicit HomeViewController(const QString &user, QObject *parent = nullptr);

    // Shows what the library knows now; run again whenever the client announces a change.
    void refresh();
    void showOutcome(const QString &text); // a line at the foot of the screen, then a refresh

protected:
    void loadView() override;

private:
    void signInOrOut();
    void openSettings();

    QString m_user;
    QLabel *m_deviceLabel = nullptr;
    QLabel *m_userLabel = nullptr;
    QLabel *m_tokenLabel = nullptr;
    QLabel *m_outcomeLabel = nullptr;
    QPushButton *m_signInButton = nullptr;
    QPushButton *m_askButton = nullptr;
    QPushButton *m_settingsButton = nullptr;
};
