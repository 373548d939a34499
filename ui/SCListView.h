#pragma once

#include "CaseFolder.h"

#include <QFileSystemWatcher>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTimer>
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
//
// Rows can be sorted by a click on a column header and narrowed down by a
// search text; both are arranged on a worker from the kept listing and fed
// back through the same batches. While the owner lets it watch, the list
// reads its folder again shortly after files were added, removed or renamed
// there, once for a burst of changes.
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

    // Shows only rows whose file name contains text, with case and accents
    // ignored ("muller" finds "Müller"); an empty text shows every file.
    void setSearchText(const QString& text);
    // Rows by name (the folder's own order when ascending) or by change time.
    void sortRows(int column, Qt::SortOrder order);
    // Watches the folder for changes; only the list in view should.
    void setWatching(bool watching);

    // The text a name is compared by when searching.
    static QString searchKey(const QString& text);

    // True from a rebuild until its last row is in.
    bool isListing() const { return m_listing; }

    // The folder string as given, directly followed by the current row's
    // name (no separator, no extension); empty without a current row.
    QString selectedFileName() const;
    // The names with extensions of every listed file, in the folder's order,
    // whatever the rows show.
    QStringList fileNames() const;
    // The number of files of the last complete listing.
    int fileCount() const { return int(m_files.size()); }
    const QList<CaseFolder::Entry>& entries() const { return m_entries; }
    // The folder entry of a row of this list; null for anything else.
    const CaseFolder::Entry* entryOf(const QTreeWidgetItem* row) const;

signals:
    // The last row of a rebuild is in (also when the folder holds nothing).
    void listingFinished();

private:
    struct Batch;
    struct Arrangement
    {
        QString searchKey;
        int column = 0;
        Qt::SortOrder order = Qt::AscendingOrder;
        bool isFolderOrder() const { return searchKey.isEmpty() && column == 0 && order == Qt::AscendingOrder; }
    };

    void pointAt(const QString& folder);
    void clearRows();
    void dropListing();
    void startListing();
    void rearrange();
    void postRows(LatestRequest& reading, quint64 request, QList<CaseFolder::Entry>&& entries);
    static QList<CaseFolder::Entry> arranged(const QList<CaseFolder::Entry>& files, const QStringList& keys,
                                             const Arrangement& arrangement, const CaseFolder::Cancelled& cancelled);
    void watchFolder();
    void takeBatch(Batch& batch);
    void finishListing();
    void updateNameColumnWidth();

    QString m_rootDir;
    QStringList m_nameFilters;
    QList<CaseFolder::Entry> m_entries;   // one per row
    QList<CaseFolder::Entry> m_files;     // the folder's files of the last complete read
    QStringList m_searchKeys;             // one per file of m_files
    Arrangement m_arrangement;
    bool m_readingFolder = false;
    bool m_watching = false;
    QFileSystemWatcher* m_watcher = nullptr;
    QTimer* m_refreshDelay = nullptr;
    std::shared_ptr<LatestRequest> m_reading;
    bool m_listing = false;
    int m_filledRows = 0;   // rows the running rebuild has written so far
    QByteArray m_keepCurrent;   // the current file's name, made current again when its row arrives
};
