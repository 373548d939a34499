#pragma once

#include <QLabel>

// A one-line label for long paths: it keeps its full text but shows it
// shortened in the middle when the space is too narrow, and never asks the
// layout for more room than a few characters.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};
