// A host of the service alone: it starts the library and nothing else.
#include <Brevanti/BVT.h>

#include <QCoreApplication>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    BVT::initWithLaunchOptions({}, QStringLiteral("client-id"), QStringLiteral("client-secret"));
    return 0;
}
