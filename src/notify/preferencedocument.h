#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <QList>
#include <QString>
#include <QVariantList>

namespace bvt {

// A preference as its row shows and sends it. A text the document does not give is null; a null
// key cannot be sent.
struct Preference
{
    QString name;
    QString key;
    bool enabled = false;
};

struct PreferenceCategory
{
    QString name;
    QString key;
    QList<Preference> preferences;
};

// The user's preference documents as the preference screens show them: categories in order, each
// with its preferences, every load appended behind the earlier ones. Nothing is checked or
// skipped: each element of a document is a category and each element of a category's
// "preferences" list a preference, whatever its type; what cannot be read stays null or off.
class BREVANTI_CORE_EXPORT PreferenceDocument
{
public:
    // Appends the categories of a decoded document.
    void append(const QVariantList &document);
    void clear();

    const QList<PreferenceCategory> &categories() const { return m_categories; }
    // Every category appended, as it was decoded.
    const QVariantList &decoded() const { return m_decoded; }

private:
    QVariantList m_decoded;
    QList<PreferenceCategory> m_categories;
};

} // namespace bvt
