#include "phonewindow.h"

#include "localservice.h"

#include <Brevanti/BVT.h>

#include <QtTest>

PhoneWindow::PhoneWindow(bvt::ViewController *root, const QSize &screen)
{
    bvt::Screen::mainScreen().setPhoneSize(screen);
    m_window = std::make_unique<bvt::Window>();
    m_window->setRootViewController(root ? root
                                         : new bvt::NavigationController(new bvt::ViewController));
    m_window->show();
}

PhoneWindow::~PhoneWindow()
{
    m_window.reset();
    // What the window's controllers left to be deleted goes now, not during the next test.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

bool PhoneWindow::startLibraryWithNewDevice()
{
    QCoreApplication::setOrganizationName(QStringLiteral("BrevantiTests"));
    QStandardPaths::setTestModeEnabled(true);
    QSettings().remove(QStringLiteral("com.brevanti.ios.BVTDeviceId"));
    BVT::initWithLaunchOptions({}, LocalService::clientId, LocalService::clientSecret);
    return QTest::qWaitFor([] { return !BVT::currentDevice().isNull(); });
}
