#pragma once

#include <QString>

class QWidget;

// The question whether to install a newer version now: an alert whose heading
// and informative text come from an HTML message (a centred heading, then a
// paragraph), optionally with a check box that switches the automatic
// version check at start on or off.
class ProceedUpdateDlg
{
public:
    ProceedUpdateDlg(QWidget* parent, const QString& message, bool askAutoCheck);

    // "Eine neue Programmversion ist verfügbar!" as heading of the question.
    static QString updateAvailableMessage();

    // Shows the alert; 1 when the user agreed, otherwise 0.
    int exec();

private:
    QWidget* m_parent;
    QString m_message;
    bool m_askAutoCheck;
};
