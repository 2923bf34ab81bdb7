#pragma once

#include "notify/preferencedocument.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace bvt::quick {

// The user's preference document as a list for QML, read as the preferences screen reads it: one
// row per preference in the document's order, each naming its category, so that a view groups
// them with section.property: "categoryName". Every load appends the fetched document behind the
// rows already there, as the screen does on each appearance; a category without preferences has
// no row. setEnabled is the flip of a row's switch, with what the screen's switch sends.
class PreferencesModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    // While a fetch is under way. A fetch that can get no access token never ends.
    Q_PROPERTY(bool loading READ loading NOTIFY loadingChanged)

public:
    enum Role {
        CategoryNameRole = Qt::UserRole + 1,
        CategoryKeyRole,
        PreferenceNameRole,
        PreferenceKeyRole,
        EnabledRole
    };

    explicit PreferencesModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    bool loading() const;

    // Fetches the document and appends it; a failure is logged and adds nothing.
    Q_INVOKABLE void load();
    // Sends the row's new position and keeps it, whatever the service answers; a row that is
    // already there sends nothing.
    Q_INVOKABLE void setEnabled(int row, bool on);

Q_SIGNALS:
    void loadingChanged();

private:
    struct Row
    {
        QString categoryName;
        QString categoryKey;
        Preference preference;
    };

    void append(const QVariantList &document);
    void fetchEnded();

    QList<Row> m_rows;
    int m_fetches = 0; // under way
};

} // namespace bvt::quick
