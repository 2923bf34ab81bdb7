#pragma once

/// \file
/// bvt::ActivityIndicatorView, a spinner.

#include <Brevanti/brevanti_widgets_export.h>

#include <QWidget>

#include <memory>

namespace bvt {

/// A spinning activity indicator, grey.
class BREVANTI_WIDGETS_EXPORT ActivityIndicatorView : public QWidget
{
    Q_OBJECT
public:
    explicit ActivityIndicatorView(QWidget *parent = nullptr); ///< 20 x 20
    ~ActivityIndicatorView() override;

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
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace bvt
