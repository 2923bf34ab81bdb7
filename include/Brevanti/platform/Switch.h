#pragma once

/// \file
/// bvt::Switch, a phone's on/off control.

#include <Brevanti/brevanti_widgets_export.h>

#include <QAbstractButton>
#include <QColor>

#include <memory>

namespace bvt {

/// A painted on/off control. valueChanged is emitted only when the user flips it, never for setOn.
class BREVANTI_WIDGETS_EXPORT Switch : public QAbstractButton
{
    Q_OBJECT
public:
    /// An off switch with the phone's green as its on colour.
    explicit Switch(QWidget *parent = nullptr);
    ~Switch() override;

    /// Whether the switch is on. Setting it emits no valueChanged; the thumb jumps, animated or
    /// not.
    ///@{
    bool isOn() const;
    void setOn(bool on, bool animated);
    ///@}
    /// The track's colour while on.
    ///@{
    QColor onTintColor() const;
    void setOnTintColor(const QColor &color);
    ///@}

    QSize sizeHint() const override; ///< 51 x 31, a phone's switch

Q_SIGNALS:
    /// The user flipped the switch (mouse, keyboard or click()); isOn tells the new state.
    void valueChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &pos) const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
