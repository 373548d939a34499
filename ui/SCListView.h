#pragma once

#include <QDir>
#include <QString>
#include <QStringList>
#include <QTreeWidget>

// The case files of the working folder in two columns: the name without its
// last extension and the time of the last change. Only files the tax program
// may read and save are listed; read-only files are left out on purpose.
class SCListView : public QTreeWidget
{
    Q_OBJECT

public:
    explicit SCListView(QWidget* parent = nullptr);
    ~SCListView() override;

    // Points the list at folder (when it changed), sets the patterns and
    // rebuilds the rows.
    void init(const QString& folder, const QStringList& nameFilters);
    // Rebuilds only when folder differs from the current one, so that a page
    // refresh with an unchanged folder keeps the user's selection.
    void setRootDir(const QString& folder);
    // Takes effect with the next rebuild; set the patterns before the folder.
    void setNameFilters(const QStringList& nameFilters);
    void updateList();

    // The folder string as given, directly followed by the current row's
    // name (no separator, no extension); empty without a current row.
    QString selectedFileName() const;
    // The names with extensions, in the order of the rows: the folder's
    // listing is kept from the last rebuild (until the patterns change), so
    // a row's index finds its own file even if the folder changed meanwhile.
    QStringList fileNames() const;

private:
    void pointAt(const QString& folder);
    void updateNameColumnWidth();

    QDir m_dir;
    QString m_rootDir;
};
