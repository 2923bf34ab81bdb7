#include "preferencesmodel.h"

#include "core/log.h"
#include "core/logging.h"
#include "notify/preferenceswitch.h"

#include <Brevanti/Client.h>
#include <Brevanti/Reply.h>

namespace bvt::quick {

PreferencesModel::PreferencesModel(QObject *parent) : QAbstractListModel(parent) { }

int PreferencesModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant PreferencesModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return QVariant();
    const Row &row = m_rows.at(index.row());
    switch (role) {
    case CategoryNameRole:
        return row.categoryName;
    case CategoryKeyRole:
        return row.categoryKey;
    case PreferenceNameRole:
        return row.preference.name;
    case PreferenceKeyRole:
        return row.preference.key;
    case EnabledRole:
        return row.preference.enabled;
    default:
        return QVariant();
    }
}

QHash<int, QByteArray> PreferencesModel::roleNames() const
{
    return {{CategoryNameRole, "categoryName"},
            {CategoryKeyRole, "categoryKey"},
            {PreferenceNameRole, "preferenceName"},
            {PreferenceKeyRole, "preferenceKey"},
            {EnabledRole, "enabled"}};
}

bool PreferencesModel::loading() const
{
    return m_fetches > 0;
}

QString PreferencesModel::errorString() const
{
    return m_error;
}

void PreferencesModel::load()
{
    if (m_fetches++ == 0)
        Q_EMIT loadingChanged();
    // The client's reply ends every fetch, also one that sends nothing or gets no token.
    Client::instance()->fetchPreferences()->then(this, [this](Reply *reply) {
        if (reply->error() == Reply::NoError) {
            take(reply->answer().toList());
            return fetchEnded(QString());
        }
        if (reply->error() == Reply::HttpStatusError || reply->error() == Reply::NetworkError
            || reply->error() == Reply::InvalidAnswerError)
            log("Preferences Error... ERROR: %@", reply->answerText());
        fetchEnded(reply->errorString());
    });
}

void PreferencesModel::take(const QVariantList &document)
{
    PreferenceDocument read;
    read.append(document);
    QList<Row> rows;
    for (const PreferenceCategory &category : read.categories()) {
        for (const Preference &preference : category.preferences)
            rows.append({category.name, category.key, preference});
    }
    if (m_replaces) {
        beginResetModel();
        m_rows = rows;
        endResetModel();
    } else if (!rows.isEmpty()) {
        beginInsertRows(QModelIndex(), int(m_rows.size()), int(m_rows.size() + rows.size() - 1));
        m_rows.append(rows);
        endInsertRows();
    }
}

void PreferencesModel::fetchEnded(const QString &error)
{
    if (m_error != error) {
        m_error = error;
        Q_EMIT errorStringChanged();
    }
    if (--m_fetches == 0)
        Q_EMIT loadingChanged();
}

void PreferencesModel::setEnabled(int row, bool on)
{
    if (row < 0 || row >= m_rows.size() || m_rows.at(row).preference.enabled == on)
        return;
    m_rows[row].preference.enabled = on;
    sendPreferenceSwitch(m_rows.at(row).categoryKey, m_rows.at(row).preference.key, on, lcQuick());
    Q_EMIT dataChanged(index(row), index(row), {EnabledRole});
}

} // namespace bvt::quick
