#pragma once

/// \file
/// BVTNotifySwitch, the switch of a preference row.

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/Switch.h>

#include <QString>

#include <memory>

/// The switch of one preference row: it remembers which preference it stands for.
class BREVANTI_WIDGETS_EXPORT BVTNotifySwitch : public bvt::Switch
{
    Q_OBJECT
public:
    /// A switch that stands for no preference until given one.
    explicit BVTNotifySwitch(QWidget *parent = nullptr);
    ~BVTNotifySwitch() override;

    QString category() const; ///< the "key" of the row's category
    /// Sets the category's key (see category).
    void setCategory(const QString &category);
    QString preference() const; ///< the "key" of the row's preference
    /// Sets the preference's key (see preference).
    void setPreference(const QString &preference);

private:
    class Private;
    const std::unique_ptr<Private> d;
};
