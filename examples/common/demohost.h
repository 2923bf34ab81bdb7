#pragma once

#include <Brevanti/ServiceRouter.h>

#include <QString>

#include <memory>

class QCoreApplication;

// What both demo hosts take from the command line.
struct DemoOptions
{
    QString clientId;
    QString clientSecret;
    QString user;
    QString screenshots; // where a walked first run saves its pictures; empty: not walked
    std::unique_ptr<bvt::ServiceRouter> router; // the library routed to --service, if given
};

// Before the application object is made: --offscreen picks the offscreen platform and, for Qt
// Quick, the software scene graph.
void chooseOffscreenPlatform(int argc, char **argv);

// Parses the options (exits on --help) and routes the library to --service when it is given.
DemoOptions readDemoOptions(const QCoreApplication &app, const QString &description);
