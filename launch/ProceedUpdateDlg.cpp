#include "ProceedUpdateDlg.h"

#include "Configuration.h"
#include "CrossPlatformApi.h"

#include <QRegularExpression>

ProceedUpdateDlg::ProceedUpdateDlg(QWidget* parent, const QString& message, bool askAutoCheck)
    : m_parent(parent), m_message(message), m_askAutoCheck(askAutoCheck)
{
}

QString ProceedUpdateDlg::updateAvailableMessage()
{
    return QStringLiteral("<b><center>%1</center></b><p>%2</p>")
        .arg(QStringLiteral("Eine neue Programmversion ist verfügbar!"),
             QStringLiteral("Möchten Sie die neue Version jetzt mit dem Online-Update installieren?"));
}

int ProceedUpdateDlg::exec()
{
    MessageBoxRequest box;
    box.icon = QMessageBox::Question;
    box.title = QStringLiteral("Online-Update");
    box.parent = m_parent;
    box.buttons = QMessageBox::Yes | QMessageBox::No;
    box.defaultButton = QMessageBox::Yes;

    static const QRegularExpression parts(QStringLiteral("center>([^<]*)</center.*<p>([^<]*)</p>(.*)"),
                                          QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = parts.match(m_message);
    if (match.hasMatch()) {
        box.text = match.captured(1);
        box.informativeText = match.captured(2) + match.captured(3);
    } else {
        box.text = m_message;
    }

    bool autoCheckWasOn = false;
    if (m_askAutoCheck) {
        autoCheckWasOn = cConfiguration::theInstance()->GetInt("Start", "VersionCheckEvery", 0) != 0;
        box.checkBoxText = QStringLiteral("Automatische Versionsprüfung bei Programmstart");
        box.checkBoxChecked = autoCheckWasOn;
    }

    const MessageBoxAnswer answer = CrossPlatformApi::showMessageBox(box);
    // Only a change is written, so that an interval of several days stays
    // as it is while the box is left ticked.
    if (m_askAutoCheck && answer.checkBoxChecked != autoCheckWasOn)
        cConfiguration::theInstance()->Write("Start", "VersionCheckEvery", answer.checkBoxChecked ? 1 : 0);
    return answer.button == QMessageBox::Yes ? 1 : 0;
}
