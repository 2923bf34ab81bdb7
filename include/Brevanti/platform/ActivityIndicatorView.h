#pragma once

/// \file
/// bvt::ActivityIndicatorView, a spinner.

#include <Brevanti/brevanti_widgets_export.h>

#include <QWidget>

namespace bvt {

/// A spinning activity indicator, grey.
class BREVANTI_WIDGETS_EXPORT ActivityIndicatorView : public QWidget
{
    Q_OBJECT
public:
    explicit ActivityIndicatorView(QWidget *parent = nullptr); ///< 20 x 20

    /// Turns the spinner until stopAnimating; still while it is stopped.
    ///@{
    void startAnimating();
    void stopAnimating();
    bool isAnimating() const;
    ///@}

    /// The centre in the parent's coordinates (the widget keeps its size).
    ///@{
    void setCenter(const QPoint &center);
    QPoint center() const;
    ///@}

protected:
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    int m_timer = 0;
    int m_step = 0;
};

} // namespace bvt
