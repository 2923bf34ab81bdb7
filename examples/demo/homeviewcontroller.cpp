#include "homeviewcontroller.h"

#include <Brevanti/BVTNotify.h>
#include <Brevanti/Client.h>
#include <Brevanti/platform/NavigationController.h>

#include <QAction>
#include <QApplication>
#include <QFontDatabase>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

const QColor captionGrey(0x8e, 0x8e, 0x93);

QLabel *addCaption(QVBoxLayout *layout, const QString &text)
{
    auto *caption = new QLabel(text);
    QFont font = caption->font();
    font.setPixelSize(12);
    caption->setFont(font);
    QPalette palette = caption->palette();
    palette.setColor(QPalette::WindowText, captionGrey);
    caption->setPalette(palette);
    caption->setWordWrap(true);
    layout->addWidget(caption);
    return caption;
}

QLabel *addValue(QVBoxLayout *layout)
{
    auto *value = new QLabel;
    value->setWordWrap(true);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(value);
    layout->addSpacing(12);
    return value;
}

// A missing value reads as a grey remark rather than as a value. Identifiers and tokens are set
// in a fixed-pitch font, which keeps their digits apart.
void showValue(QLabel *label, const QString &value, const QString &whenMissing, bool fixedPitch)
{
    const bool missing = value.isNull();
    label->setText(missing ? whenMissing : value);
    QFont font = fixedPitch && !missing ? QFontDatabase::systemFont(QFontDatabase::FixedFont)
                                        : QApplication::font();
    font.setPixelSize(15);
    label->setFont(font);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, missing ? captionGrey : QColor(Qt::black));
    label->setPalette(palette);
}

// A token is one long word, which a label cannot wrap; groups of eight digits can.
QString groupedToken(const QString &token)
{
    if (token.isNull())
        return token;
    QStringList groups;
    for (qsizetype at = 0; at < token.size(); at += 8)
        groups.append(token.mid(at, 8));
    return groups.join(QLatin1Char(' '));
}

QPushButton *addButton(QVBoxLayout *layout, const QString &name)
{
    auto *button = new QPushButton;
    button->setObjectName(name);
    button->setMinimumHeight(44); // a finger's tap
    layout->addWidget(button);
    return button;
}

} // namespace

HomeViewController::HomeViewController(const QString &user, QObject *parent)
    : bvt::ViewController(parent), m_user(user)
{
    setTitle(tr("Brevanti demo"));
    bvt::Client *client = bvt::Client::instance();
    for (const auto changed :
         {&bvt::Client::deviceIdChanged, &bvt::Client::userChanged, &bvt::Client::pushTokenChanged})
        connect(client, changed, this, &HomeViewController::refresh);
    connect(client, &bvt::Client::cardFinished, this, [this](bvt::Client::CardOutcome outcome) {
        // With a token stored no card shows; the user would otherwise see nothing happen.
        if (outcome == bvt::Client::CardNotShown)
            showOutcome(tr("Notifications are on already, so no card is shown."));
    });
}

void HomeViewController::loadView()
{
    auto *view = new QWidget;
    view->setAutoFillBackground(true);
    QPalette palette = view->palette();
    palette.setColor(QPalette::Window, Qt::white);
    view->setPalette(palette);

    auto *layout = new QVBoxLayout(view);
    layout->setContentsMargins(20, 20, 20, 20);
    layout->setSpacing(4);
    addCaption(layout, tr("DEVICE IDENTIFIER"));
    m_deviceLabel = addValue(layout);
    addCaption(layout, tr("USER"));
    m_userLabel = addValue(layout);
    addCaption(layout, tr("PUSH TOKEN"));
    m_tokenLabel = addValue(layout);

    layout->addSpacing(8);
    m_signInButton = addButton(layout, QStringLiteral("signInButton"));
    layout->addSpacing(4);
    m_askButton = addButton(layout, QStringLiteral("askButton"));
    m_askButton->setText(tr("Ask for notifications"));
    layout->addSpacing(4);
    m_settingsButton = addButton(layout, QStringLiteral("settingsButton"));
    m_settingsButton->setText(tr("Notification settings"));
    layout->addStretch(1);
    m_outcomeLabel = addCaption(layout, QString());

    connect(m_signInButton, &QPushButton::clicked, this, &HomeViewController::signInOrOut);
    connect(m_askButton, &QPushButton::clicked, this, [this] {
        showOutcome(QString());
        BVTNotify::requestCustomPreferences();
    });
    connect(m_settingsButton, &QPushButton::clicked, this, &HomeViewController::openSettings);

    setView(view);
    refresh();
}

void HomeViewController::refresh()
{
    if (!isViewLoaded())
        return;
    const bvt::Client *client = bvt::Client::instance();
    const QString device = client->deviceId();
    const QString user = client->user();
    showValue(m_deviceLabel, device, tr("Registering this device…"), true);
    showValue(m_userLabel, user, tr("Not signed in"), false);
    showValue(m_tokenLabel, groupedToken(client->pushToken()), tr("Not enabled yet"), true);
    m_signInButton->setText(user.isNull() ? tr("Sign in as %1").arg(m_user) : tr("Sign out"));
    // Until the service has issued the identifier the library drops every call.
    const bool registered = !device.isNull();
    m_signInButton->setEnabled(registered);
    m_askButton->setEnabled(registered);
    m_settingsButton->setEnabled(registered);
}

void HomeViewController::signInOrOut()
{
    bvt::Client *client = bvt::Client::instance();
    const bool signingIn = client->user().isNull();
    bvt::Reply *reply = signingIn ? client->assignDeviceToUser(m_user) : client->unassignDevice();
    reply->then(this, [this, signingIn](bvt::Reply *reply) {
        if (reply->error() == bvt::Reply::NoError)
            showOutcome(signingIn ? tr("Signed in as %1.").arg(m_user) : tr("Signed out."));
        else
            showOutcome(tr("%1 failed: %2")
                                .arg(signingIn ? tr("Signing in") : tr("Signing out"),
                                     reply->errorString()));
    });
}

void HomeViewController::openSettings()
{
    bvt::NavigationController *navigation = navigationController();
    BVTNotify::openPreferencesWithNavigationController(navigation);
    bvt::ViewController *settings = navigation->topViewController();
    if (settings == this)
        return;
    // The navigation bar has no back button, so the pushed screen gets a way home.
    auto *done = new QAction(tr("Done"), settings);
    connect(done, &QAction::triggered, this, [this, navigation] {
        // The popped screen is ours now; it goes once the tap that pops it is over.
        if (bvt::ViewController *popped = navigation->popViewControllerAnimated(true))
            popped->deleteLater();
        refresh();
    });
    settings->navigationItem().rightBarButtonItem = done;
    navigation->navigationBar()->setItem(settings->navigationItem());
}

void HomeViewController::showOutcome(const QString &text)
{
    m_outcomeLabel->setText(text);
    refresh();
}
