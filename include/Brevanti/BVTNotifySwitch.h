#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <Brevanti/platform/Switch.h>

#include <QString>

#include <memory>

// The switch of one preference row: it remembers which preference it stands for.
class BREVANTI_WIDGETS_EXPORT BVTNotifySwitch : public bvt::Switch
{
    Q_OBJECT
public:
    explicit BVTNotifySwitch(QWidget *parent = nullptr);
    ~BVTNotifySwitch() override;

    QString category() const; // the "key" of the row's category
    void setCategory(const QString &category);
    QString preference() const; // the "key" of the row's preference
    void setPreference(const QString &preference);

private:
    class Private;
    const std::unique_ptr<Private> d;
};
