#pragma once

#include <QAbstractButton>
#include <QColor>

namespace bvt {

// A painted on/off control. valueChanged is emitted only when the user flips it, never for setOn.
class Switch : public QAbstractButton
{
    Q_OBJECT
public:
    explicit Switch(QWidget *parent = nullptr);

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
    QColor m_onTint;
};

// A spinning activity indicator, grey.
class ActivityIndicatorView : public QWidget
{
    Q_OBJECT
public:
    explicit ActivityIndicatorView(QWidget *parent = nullptr); // 20 x 20

    void startAnimating();
    void stopAnimating();
    bool isAnimating() const;

    // The centre in the parent's coordinates (the widget keeps its size).
    void setCenter(const QPoint &center);
    QPoint center() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    int m_timer = 0;
    int m_step = 0;
};

// A view's tag, to find it again among its parent's descendants.
void setViewTag(QWidget *view, int tag);
int viewTag(const QWidget *view);
QWidget *viewWithTag(QWidget *root, int tag); // root itself or a descendant; nullptr when none

} // namespace bvt
