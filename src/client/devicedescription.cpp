#include "devicedescription.h"

#include "core/device.h"

#include <Brevanti/BVT.h>

#include <QRegularExpression>
#include <QStringDecoder>

#include <sys/utsname.h>

namespace bvt {

QString osVersionText(const QString &systemVersion)
{
    // The leading decimal number, read in single precision: "9.3.2" is 9.3, "" is 0.
    static const QRegularExpression leadingNumber(
            QStringLiteral(R"(^\s*[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?)"));
    const QRegularExpressionMatch match = leadingNumber.match(systemVersion);
    const float number = match.hasMatch() ? match.captured().trimmed().toFloat() : 0.0f;
    return QString::asprintf("%f", double(number));
}

BVTParameters deviceDescription()
{
    const Device &device = Device::currentDevice();
    return {{QStringLiteral("device"),
             BVTParameters{{QStringLiteral("os"), QStringLiteral("ios")},
                           {QStringLiteral("os_version"), osVersionText(device.systemVersion())},
                           {QStringLiteral("model"), device.model()},
                           {QStringLiteral("manufacturer"), QStringLiteral("Apple")}}}};
}

} // namespace bvt

extern "C" QString deviceName()
{
    utsname system{};
    uname(&system);
    const QByteArray machine(system.machine);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString name = decoder.decode(machine);
    return decoder.hasError() ? QString() : name;
}
