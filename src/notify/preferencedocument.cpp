#include "preferencedocument.h"

#include "core/integervalue.h"
#include "core/log.h"

namespace bvt {

namespace {

// A text member as shown: text as it is, a number as its decimal text, else null.
QString textOf(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Double:
    case QMetaType::LongLong:
    case QMetaType::Int:
    case QMetaType::Bool:
        return describe(value);
    default:
        return QString();
    }
}

// Only a real list counts: QVariant would turn a string into a list of its characters.
QVariantList preferencesOf(const QVariantMap &category)
{
    const QVariant preferences = category.value(QStringLiteral("preferences"));
    return preferences.typeId() == QMetaType::QVariantList ? preferences.toList() : QVariantList();
}

Preference readPreference(const QVariant &entry)
{
    const QVariantMap members = entry.toMap();
    return {textOf(members.value(QStringLiteral("name"))),
            textOf(members.value(QStringLiteral("key"))),
            integerValue(members.value(QStringLiteral("enabled"))) != 0};
}

PreferenceCategory readCategory(const QVariant &entry)
{
    const QVariantMap members = entry.toMap();
    PreferenceCategory category{textOf(members.value(QStringLiteral("name"))),
                                textOf(members.value(QStringLiteral("key"))),
                                {}};
    const QVariantList preferences = preferencesOf(members);
    category.preferences.reserve(preferences.size());
    for (const QVariant &preference : preferences)
        category.preferences.append(readPreference(preference));
    return category;
}

} // namespace

void PreferenceDocument::append(const QVariantList &document)
{
    m_decoded.append(document);
    for (const QVariant &category : document)
        m_categories.append(readCategory(category));
}

void PreferenceDocument::clear()
{
    m_decoded.clear();
    m_categories.clear();
}

} // namespace bvt
