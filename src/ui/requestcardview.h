#pragma once

#include <QWidget>

class BVTNotifyRequestViewController;

// The request card's view, built from its interface file, which connects the three buttons to
// these slots; each goes on to the controller.
class RequestCardView : public QWidget
{
    Q_OBJECT
public:
    explicit RequestCardView(BVTNotifyRequestViewController *controller);

public Q_SLOTS:
    void keepMeUpdatedButtonTapped();
    void customizeButtonTapped();
    void noThanksButtonTapped();

private:
    BVTNotifyRequestViewController *m_controller;
};
