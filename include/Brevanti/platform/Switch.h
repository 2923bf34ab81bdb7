#pragma once

#include <Brevanti/brevanti_widgets_export.h>

#include <QAbstractButton>
#include <QColor>

#include <memory>

namespace bvt {

// A painted on/off control. valueChanged is emitted only when the user flips it, never for setOn.
class BREVANTI_WIDGETS_EXPORT Switch : public QAbstractButton
{
    Q_OBJECT
public:
    explicit Switch(QWidget *parent = nullptr);
    ~Switch() override;

    bool isOn() const;
    void setOn(bool on, bool animated);
    QColor onTintColor() const;
    void setOnTintColor(const QColor &color);

    QSize sizeHint() const override; // 51 x 31, a phone's switch

Q_SIGNALS:
    void valueChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &pos) const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
