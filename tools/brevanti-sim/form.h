#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QString>

namespace bvtsim {

// A form or a query as application/x-www-form-urlencoded sends it: pairs in order, where a key
// may come more than once.
class Form
{
public:
    Form() = default;
    static Form decode(const QByteArray &encoded);

    QString value(const QString &key) const; // the first value of key; null when absent
    bool has(const QString &key) const;
    // A key seen once maps to its value, a repeated key to the array of its values in order.
    QJsonObject toJson() const;

private:
    QList<QPair<QString, QString>> m_pairs;
};

} // namespace bvtsim
