#pragma once

#include "notify/preferencedocument.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace bvt::quick {

/// The user's preference document as a list model: one row per preference in the document's
/// order, with the roles categoryName, categoryKey, preferenceName, preferenceKey and enabled, so
/// that a view groups them with section.property: "categoryName". Every load appends the fetched
/// document behind the rows already there, as the widget screen does on each appearance, unless
/// replacesOnLoad; a category without preferences has no row.
class PreferencesModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    /// While a fetch is under way; every fetch ends, also without a device or an access token.
    Q_PROPERTY(bool loading READ loading NOTIFY loadingChanged)
    /// Why the last fetch failed; empty once one succeeded.
    Q_PROPERTY(QString errorString READ errorString NOTIFY errorStringChanged)
    /// A fetched document replaces the rows instead of being appended to them.
    Q_PROPERTY(bool replacesOnLoad MEMBER m_replaces NOTIFY replacesOnLoadChanged)

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
    QString errorString() const;

    /// Fetches the document and appends it (or replaces the rows with it); a failure is logged,
    /// kept as errorString, and changes no row.
    Q_INVOKABLE void load();
    /// The flip of a row's switch: sends the row's new position and keeps it, whatever the
    /// service answers; a row that is already there sends nothing.
    Q_INVOKABLE void setEnabled(int row, bool on);

Q_SIGNALS:
    /// Each is emitted when its property changes.
    void loadingChanged();
    void errorStringChanged();
    void replacesOnLoadChanged();

private:
    struct Row
    {
        QString categoryName;
        QString categoryKey;
        Preference preference;
    };

    void take(const QVariantList &document);
    void fetchEnded(const QString &error);

    QList<Row> m_rows;
    int m_fetches = 0; // under way
    QString m_error;
    bool m_replaces = false;
};

} // namespace bvt::quick
