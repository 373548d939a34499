#pragma once

#include "CaseFolder.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QTreeWidget>

#include <memory>

class LatestRequest;

// The case files of the working folder in two columns: the name without its
// last extension and the time of the last change. Only files the tax program
// may read and save are listed; read-only files are left out on purpose.
//
// The folder is read on a worker thread and the rows arrive in batches, so a
// large folder never stalls the window. Every refresh is one call that
// overtakes the one before: rows of an overtaken refresh are dropped, never
// mixed in. The listing (entries()) is kept beside the rows, one entry per
// row in the same order, so rows can be rebuilt in another order or subset
// from it without reading the folder again.
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
    // Reads the folder again. The rows stay and are updated in place as the
    // new listing arrives, and the current file stays current.
    void updateList();

    // True from a rebuild until its last row is in.
    bool isListing() const { return m_listing; }

    // The folder string as given, directly followed by the current row's
    // name (no separator, no extension); empty without a current row.
    QString selectedFileName() const;
    // The names with extensions, in the order of the rows.
    QStringList fileNames() const;
    const QList<CaseFolder::Entry>& entries() const { return m_entries; }
    // The folder entry of a row of this list; null for anything else.
    const CaseFolder::Entry* entryOf(const QTreeWidgetItem* row) const;

signals:
    // The last row of a rebuild is in (also when the folder holds nothing).
    void listingFinished();

private:
    struct Batch;

    void pointAt(const QString& folder);
    void clearRows();
    void startListing();
    void takeBatch(Batch& batch);
    void finishListing();
    void updateNameColumnWidth();

    QString m_rootDir;
    QStringList m_nameFilters;
    QList<CaseFolder::Entry> m_entries;
    std::shared_ptr<LatestRequest> m_reading;
    bool m_listing = false;
    int m_filledRows = 0;   // rows the running rebuild has written so far
    QByteArray m_keepCurrent;   // the current file's name, made current again when its row arrives
};
