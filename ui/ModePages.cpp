#include "ModePages.h"

namespace {

struct ActionPageTexts
{
    const char* newCaption;
    const char* otherCaption;
    const char* lastCaption;
    const char* heading;
    const char* newComment;
    const char* lastComment;      // the last file's name follows
    const char* convertComment;   // the older file's name follows
};

void setTexts(ActionPage* page, const ActionPageTexts& texts)
{
    page->setActionCaption(ActionPage::ActionNew, QString::fromUtf8(texts.newCaption));
    page->setActionCaption(ActionPage::ActionOther, QString::fromUtf8(texts.otherCaption));
    page->setActionCaption(ActionPage::ActionLast, QString::fromUtf8(texts.lastCaption));
    page->setActionCaption(ActionPage::ActionConvert, QStringLiteral("Ältere Daten\nübernehmen"));
    page->setActionCaption(ActionPage::ActionHeading, QString::fromUtf8(texts.heading));
    page->setActionComment(ActionPage::ActionNew, QString::fromUtf8(texts.newComment));
    page->setActionComment(ActionPage::ActionLast, QString::fromUtf8(texts.lastComment));
    page->setActionComment(ActionPage::ActionConvert, QString::fromUtf8(texts.convertComment));
}

struct ModePageTexts
{
    const char* newFile;
    const char* lastFile;
    const char* otherFiles;
    const char* convert;
    const char* heading;
};

void setTexts(ModePage* page, const ModePageTexts& texts)
{
    page->setFunctionCaption(ModePage::FunctionNew, QString::fromUtf8(texts.newFile));
    page->setFunctionCaption(ModePage::FunctionLast, QString::fromUtf8(texts.lastFile));
    page->setFunctionCaption(ModePage::FunctionOther, QString::fromUtf8(texts.otherFiles));
    page->setFunctionCaption(ModePage::FunctionConvert, QString::fromUtf8(texts.convert));
    page->setFunctionCaption(ModePage::FunctionHeading, QString::fromUtf8(texts.heading));
}

} // namespace

ModePageNormal::ModePageNormal(QWidget* parent)
    : ActionPage(parent)
{
    setTexts(this,
             {"Neue\nSteuererklärung\nerstellen", "Anderen\nSteuerfall\nöffnen",
              "Letzte\nSteuererklärung\nöffnen", "Steuererklärungen 2011",
              "Erstellen Sie eine Einkommensteuer-Erklärung für das Jahr 2011.",
              // The lower-case "sie" is the text as the product has always shown it.
              "Öffnen Sie den letzten Steuerfall, an dem sie gearbeitet haben: ",
              "Es wurde ein Steuerfall aus dem Vorjahr gefunden.\nÜbernehmen Sie die Daten vom "
              "letzten Jahr in eine neue Steuererklärung für 2011: "});
}

ModePageVorweg::ModePageVorweg(QWidget* parent)
    : ActionPage(parent)
{
    setTexts(this,
             {"Neue\nSteuerprognose\nerstellen", "Andere\nSteuerprognose\nöffnen",
              "Letzte\nSteuerprognose\nöffnen", "Steuerprognosen 2012",
              "Erfassen Sie vorab Ihre Einnahmen und Ausgaben und erstellen Sie eine Prognose für "
              "das Jahr 2012.",
              "Öffnen Sie die letzte Steuerprognose, an der Sie gearbeitet haben: ",
              "Es wurde eine Steuerprognose aus dem Vorjahr gefunden.\nÜbernehmen Sie die Daten vom "
              "letzten Jahr in eine neue Steuerprognose für 2012: "});
}

ModePageErmaess::ModePageErmaess(QWidget* parent)
    : ActionPage(parent)
{
    setTexts(this,
             {"Neuen\nErmäßigungsantrag\nstellen", "Anderen\nErmäßigungsantrag\nöffnen",
              "Letzten\nErmäßigungsantrag\nöffnen", "Ermäßigungsanträge 2012",
              "Stellen Sie einen Antrag auf Lohnsteuer-Ermäßigung oder beantragen Sie einen "
              "Steuerklassenwechsel für das Jahr 2012.",
              "Öffnen Sie den letzten Ermäßigungsantrag, an dem Sie gearbeitet haben: ",
              "Es wurde ein Ermäßigungsantrag aus dem Vorjahr gefunden.\nÜbernehmen Sie die Daten "
              "vom letzten Jahr in einen neuen Ermäßigungsantrag für 2012: "});
}

ModePageEinur::ModePageEinur(QWidget* parent)
    : ActionPage(parent)
{
    setTexts(this,
             {"Neue\nGewinnermittlung\nerstellen", "Andere\nGewinnermittlung\nöffnen",
              "Letzte\nGewinnermittlung\nöffnen", "Gewinnermittlungen 2011",
              "Erfassen Sie alle betrieblichen Einnahmen und Ausgaben für das Jahr 2011 für die "
              "Anlage EÜR, Umsatzsteuer- oder Gewerbesteuererklärung.",
              "Öffnen Sie die letzte Gewinnermittlung, an der Sie gearbeitet haben: ",
              "Es wurde eine Gewinnermittlung aus dem Vorjahr gefunden.\nÜbernehmen Sie die Daten "
              "vom letzten Jahr in eine neue Gewinnermittlung für 2011: "});
}

ModePageEinurVor::ModePageEinurVor(QWidget* parent)
    : ActionPage(parent)
{
    setTexts(this,
             {"Neue\nGewinn-Erfassung\nerstellen", "Andere\nGewinn-Erfassung\nöffnen",
              "Letzte\nGewinn-Erfassung\nöffnen", "Gewinn-Erfassungen 2012",
              "Erfassen Sie Ihre betrieblichen Einnahmen und Ausgaben für das Jahr 2012 und "
              "erstellen Sie daraus Umsatzsteuer-Voranmeldungen oder Lohnsteueranmeldungen.",
              "Öffnen Sie die letzte Gewinn-Erfassung, an der Sie gearbeitet haben: ",
              "Es wurde eine Gewinn-Erfassung aus dem Vorjahr gefunden.\nÜbernehmen Sie die Daten "
              "vom letzten Jahr in eine neue Gewinn-Erfassung für 2012: "});
}

ModePageFest::ModePageFest(QWidget* parent)
    : ActionPage(parent)
{
    setTexts(this,
             {"Neue\nFeststellungserklärung\nerstellen", "Andere\nFeststellungserklärung\nöffnen",
              "Letzte\nFeststellungserklärung\nöffnen", "Feststellungserklärungen 2011",
              "Erstellen Sie eine Erklärung zur gesonderten und einheitlichen Feststellung für das "
              "Jahr 2011.",
              "Öffnen Sie die letzte Feststellungserklärung, an der Sie gearbeitet haben: ",
              "Es wurde eine Feststellungserklärung aus dem Vorjahr gefunden.\nÜbernehmen Sie die "
              "Daten vom letzten Jahr in eine neue Feststellungserklärung für 2011: "});
}

// The leading blank of the other-files captions belongs to the text.
ModePageNebenk::ModePageNebenk(QWidget* parent)
    : ModePage(parent)
{
    setTexts(this, {"Neue Nebenkostenabrechnung", "Letzte Nebenkostenabrechnung",
                    " Weitere Abrechnungen...", "Datenübernahme starten",
                    "Nebenkostenabrechnungen"});
}

void ModePageNebenk::showEvent(QShowEvent* event)
{
    ModePage::showEvent(event);
}

ModePageZulage::ModePageZulage(QWidget* parent)
    : ModePage(parent)
{
    setTexts(this, {"Neuer Zulage-Antrag", "Letzter Zulage-Antrag", " Weitere Anträge...",
                    "Datenübernahme starten", "Zulage-Anträge"});
}

void ModePageZulage::showEvent(QShowEvent* event)
{
    ModePage::showEvent(event);
}
