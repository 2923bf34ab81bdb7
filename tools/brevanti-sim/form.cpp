#include "form.h"

#include <QJsonArray>

#include <algorithm>

namespace bvtsim {

Form Form::decode(const QByteArray &encoded)
{
    const auto decodePart = [](QByteArray part) {
        return QString::fromUtf8(QByteArray::fromPercentEncoding(part.replace('+', ' ')));
    };
    Form form;
    for (const QByteArray &part : encoded.split('&')) {
        if (part.isEmpty())
            continue;
        const qsizetype equals = part.indexOf('=');
        if (equals < 0)
            form.m_pairs.append({decodePart(part), QString()});
        else
            form.m_pairs.append({decodePart(part.left(equals)), decodePart(part.mid(equals + 1))});
    }
    return form;
}

QString Form::value(const QString &key) const
{
    for (const auto &pair : m_pairs) {
        if (pair.first == key)
            return pair.second;
    }
    return QString();
}

bool Form::has(const QString &key) const
{
    return std::any_of(m_pairs.cbegin(), m_pairs.cend(),
                       [&key](const auto &pair) { return pair.first == key; });
}

QJsonObject Form::toJson() const
{
    QJsonObject object;
    for (const auto &[key, value] : m_pairs) {
        const auto it = object.find(key);
        if (it == object.end()) {
            object.insert(key, value);
        } else if (it.value().isArray()) {
            QJsonArray values = it.value().toArray();
            values.append(value);
            it.value() = values;
        } else {
            it.value() = QJsonArray{it.value().toString(), value};
        }
    }
    return object;
}

} // namespace bvtsim
