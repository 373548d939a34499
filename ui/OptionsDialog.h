#pragma once

#include <QDialog>
#include <QString>

class QCheckBox;
class QLabel;
class QRadioButton;
class QVBoxLayout;

// The launcher's settings dialog: three switches for the launcher's start,
// what the launcher does when the tax program starts, and the installed
// version. Every change is written at once; OK writes all values once more.
class OptionsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit OptionsDialog(QWidget* parent = nullptr, Qt::WindowFlags flags = {});

    // Sets the controls from the settings without writing anything back.
    void loadValues();
    // Stores the text as "StartCenter"/"OnORVStart".
    void writeCloseBehaviour(const QString& behaviour);
    // "ORV Version <version>" of the tax program, when known, above the
    // launcher's own build.
    QString getVersionString() const;

public slots:
    void accept() override;

private slots:
    void onPlaySoundToggled(bool checked);
    void onLastModeToggled(bool checked);
    void onVersionCheckToggled(bool checked);
    void onMinimizeSCToggled(bool checked);
    void onCloseSCToggled(bool checked);
    void onNoChangeToggled(bool checked);

private:
    void createControls();
    void connectControls();
    // The tax program's version from its bundle, otherwise from the
    // version file; empty when neither knows it.
    static QString orvVersion();
    static QString launcherBuild();

    QVBoxLayout* m_pMainLayout = nullptr;
    QCheckBox* m_pPlaySound = nullptr;
    QCheckBox* m_pLastMode = nullptr;
    QCheckBox* m_pVersionCheck = nullptr;
    QRadioButton* m_pMinimizeSC = nullptr;
    QRadioButton* m_pCloseSC = nullptr;
    QRadioButton* m_pNoChange = nullptr;
    QLabel* m_pVersion = nullptr;
};
