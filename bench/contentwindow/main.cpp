// The fair floor of the start-up benchmark: a Qt Widgets program built the
// obvious way that shows what the launcher's window shows (the header
// picture, six buttons with text and icon, a tree of 15 rows, a tool bar of
// five actions). Like the launcher under the benchmark, it prints "shown"
// once its window's first frame is painted.
//
//   contentwindow <picture folder> <header picture>
//
// The picture folder holds the sample installation's pictures as PNG files.

#include "FirstPaint.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QDir>
#include <QIcon>
#include <QLabel>
#include <QMainWindow>
#include <QPixmap>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QDir pictures(arguments.value(1));
    const auto icon = [&](const char* name) { return QIcon(pictures.filePath(QLatin1String(name) + ".png")); };

    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Start-Center 2012"));
    auto* central = new QWidget(&window);
    auto* column = new QVBoxLayout(central);
    auto* header = new QLabel(central);
    header->setPixmap(QPixmap(arguments.value(2)));
    column->addWidget(header);

    auto* row = new QHBoxLayout();
    auto* buttons = new QVBoxLayout();
    const char* const modes[][2] = {{"normal", "Steuererklärung 2011"},
                                    {"vorweg", "Prognose/Vorweg-Erfassung 2012"},
                                    {"ermaess", "Lohnsteuer-Ermäßigung 2012"},
                                    {"einur", "Gewinnermittlung 2011"},
                                    {"einurvor", "Gewinn-Erfassung 2012"},
                                    {"fest", "Gesonderte Feststellung 2011"}};
    for (const auto& [iconName, text] : modes) {
        auto* button = new QToolButton(central);
        button->setText(QString::fromUtf8(text));
        button->setIcon(icon(iconName));
        button->setIconSize(QSize(32, 32));
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        buttons->addWidget(button);
    }
    row->addLayout(buttons);

    auto* tree = new QTreeWidget(central);
    tree->setHeaderLabels({QStringLiteral("Dateiname"), QStringLiteral("Letzte Änderung")});
    for (int i = 1; i <= 15; ++i)
        new QTreeWidgetItem(tree, {QStringLiteral("Steuerfall %1").arg(i), QStringLiteral("23.11.2011 12:00")});
    row->addWidget(tree);
    column->addLayout(row);
    window.setCentralWidget(central);

    auto* toolBar = new QToolBar(&window);
    toolBar->setIconSize(QSize(24, 24));
    toolBar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    const char* const actions[][2] = {{"kompass-small", "Kursel"},     {"handbuch", "Handbuch"},
                                      {"support", "Support"},          {"online-small", "Online-Update"},
                                      {"optionen", "Optionen"}};
    for (const auto& [iconName, text] : actions)
        toolBar->addAction(icon(iconName), QString::fromUtf8(text));
    window.addToolBar(Qt::BottomToolBarArea, toolBar);

    window.show();
    runAfterFirstPaint(&window, [] {
        std::fputs("shown\n", stdout);
        std::fflush(stdout);
    });
    return QApplication::exec();
}
