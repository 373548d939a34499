#pragma once

#include <QMainWindow>

// The launcher's main window.
class StartCenter : public QMainWindow
{
    Q_OBJECT

public:
    explicit StartCenter(QWidget* parent = nullptr, Qt::WindowFlags flags = {});

public slots:
    // Brings the window to the front: shown normally if it was minimised,
    // raised and made the active window.
    void activateMainWindow();
};
