#include "SCListView.h"

#include "SCAppStyle.h"

#include "LatestRequest.h"

#include <QApplication>
#include <QDir>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QStyle>
#include <QThreadPool>

#include <algorithm>

namespace {

// Rows per batch. Adding rows is cheap, but every batch makes the view lay
// out all its rows again at the next paint, so batches grow as the list does.
constexpr int firstBatch = 500;
constexpr int largestBatch = 8000;

// Rows without a view are plain objects; many of them are deleted on a
// worker, since that takes longer than a frame.
void deleteRows(QList<QTreeWidgetItem*> rows)
{
    if (rows.size() < firstBatch)
        qDeleteAll(rows);
    else
        QThreadPool::globalInstance()->start([rows = std::move(rows)] { qDeleteAll(rows); });
}

// Changes in the folder within this time after the first one (a program
// saving through a temporary file, a copy of many files) share one refresh.
constexpr int refreshDelayMs = 250;

// Calls deliver with consecutive parts of entries, growing as the read does.
void inBatches(QList<CaseFolder::Entry>&& entries, const std::function<void(QList<CaseFolder::Entry>&&)>& deliver)
{
    qsizetype size = firstBatch;
    for (qsizetype from = 0; from < entries.size(); from += size, size = std::min<qsizetype>(2 * size, largestBatch))
        deliver(entries.mid(from, size));
}

} // namespace

// Rows built on the worker, still owned here until the list takes them.
struct SCListView::Batch
{
    QList<CaseFolder::Entry> entries;
    QList<QTreeWidgetItem*> rows;
    ~Batch() { deleteRows(std::move(rows)); }
};

SCListView::SCListView(QWidget* parent)
    : QTreeWidget(parent)
    , m_reading(LatestRequest::create(this))
{
    QFont listFont = parent ? parent->font() : font();
    listFont.setWeight(QFont::Normal);
    setFont(listFont);
    setUniformRowHeights(true);
    setHeaderLabels({QStringLiteral("Dateiname"), QStringLiteral("Letzte Änderung")});

    // Sorting is done here on a worker, never by the view on the UI thread.
    header()->setSectionsClickable(true);
    header()->setSortIndicator(0, Qt::AscendingOrder);
    connect(header(), &QHeaderView::sectionClicked, this, [this](int column) {
        const bool reverse = column == m_arrangement.column && header()->isSortIndicatorShown();
        const Qt::SortOrder order = reverse && m_arrangement.order == Qt::AscendingOrder
            ? Qt::DescendingOrder : Qt::AscendingOrder;
        sortRows(column, order);
    });

    m_refreshDelay = new QTimer(this);
    m_refreshDelay->setSingleShot(true);
    m_refreshDelay->setInterval(refreshDelayMs);
    connect(m_refreshDelay, &QTimer::timeout, this, &SCListView::updateList);
}

SCListView::~SCListView()
{
    m_reading->detach();
}

void SCListView::init(const QString& folder, const QStringList& nameFilters)
{
    if (folder != m_rootDir)
        pointAt(folder);
    else if (nameFilters != m_nameFilters)
        dropListing();   // files of other patterns must not stay in view
    setNameFilters(nameFilters);
    updateList();
}

void SCListView::setRootDir(const QString& folder)
{
    if (folder == m_rootDir)
        return;
    pointAt(folder);
    updateList();
}

void SCListView::setNameFilters(const QStringList& nameFilters)
{
    m_nameFilters = nameFilters;
}

void SCListView::updateList()
{
    const CaseFolder::Entry* current = entryOf(currentItem());
    m_keepCurrent = current ? current->localName : QByteArray();
    startListing();
}

void SCListView::setSearchText(const QString& text)
{
    QString key = searchKey(text);
    if (key == m_arrangement.searchKey)
        return;
    m_arrangement.searchKey = std::move(key);
    rearrange();
}

void SCListView::sortRows(int column, Qt::SortOrder order)
{
    header()->setSortIndicatorShown(true);
    header()->setSortIndicator(column, order);
    if (column == m_arrangement.column && order == m_arrangement.order)
        return;
    m_arrangement.column = column;
    m_arrangement.order = order;
    rearrange();
}

void SCListView::setWatching(bool watching)
{
    m_watching = watching;
    if (!watching)
        m_refreshDelay->stop();
    watchFolder();
}

// Lower case without accents, so that "MÜLLER", "müller" and "muller" meet;
// "ß" counts as "ss".
QString SCListView::searchKey(const QString& text)
{
    const bool plain = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
    if (plain)
        return text.toLower();
    QString decomposed = text.normalized(QString::NormalizationForm_KD);
    decomposed.replace(QChar(0x00DF), QLatin1String("ss")).replace(QChar(0x1E9E), QLatin1String("ss"));
    QString key;
    key.reserve(decomposed.size());
    for (QChar c : std::as_const(decomposed)) {
        if (!c.isMark())
            key.append(c);
    }
    return key.toCaseFolded();
}

QString SCListView::selectedFileName() const
{
    const QTreeWidgetItem* row = currentItem();
    return row ? m_rootDir + row->text(0) : QString();
}

QStringList SCListView::fileNames() const
{
    QStringList names;
    names.reserve(m_files.size());
    for (const CaseFolder::Entry& entry : m_files)
        names.append(entry.name);
    return names;
}

const CaseFolder::Entry* SCListView::entryOf(const QTreeWidgetItem* row) const
{
    const int index = row ? indexOfTopLevelItem(const_cast<QTreeWidgetItem*>(row)) : -1;
    return index >= 0 && index < m_entries.size() ? &m_entries.at(index) : nullptr;
}

// A new folder drops the old rows at once: they must never be taken for
// files of the new one.
void SCListView::pointAt(const QString& folder)
{
    m_rootDir = folder;
    dropListing();
    watchFolder();
}

void SCListView::clearRows()
{
    clear();
    m_entries.clear();
}

void SCListView::dropListing()
{
    clearRows();
    m_files.clear();
    m_searchKeys.clear();
}

void SCListView::watchFolder()
{
    if (!m_watcher) {
        if (!m_watching)
            return;
        m_watcher = new QFileSystemWatcher(this);
        // Changes during the delay join the refresh already due.
        connect(m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
            if (!m_refreshDelay->isActive())
                m_refreshDelay->start();
        });
    }
    const QStringList watched = m_watcher->directories();
    const bool wanted = m_watching && !m_rootDir.isEmpty();
    if (wanted && watched == QStringList{QDir::cleanPath(m_rootDir)})
        return;
    if (!watched.isEmpty())
        m_watcher->removePaths(watched);
    if (wanted)
        m_watcher->addPath(QDir::cleanPath(m_rootDir));
}

// Reads the folder. In the folder's own order the rows come as the read
// goes; sorted or searched rows come once the whole folder is read.
void SCListView::startListing()
{
    m_listing = true;
    m_readingFolder = true;
    m_filledRows = 0;
    updateNameColumnWidth();
    LatestRequest::start(m_reading, [this, folder = m_rootDir, nameFilters = m_nameFilters,
                                     arrangement = m_arrangement](LatestRequest& reading, quint64 request) {
        const auto cancelled = [&] { return !reading.isCurrent(request); };
        const auto deliver = [&](QList<CaseFolder::Entry>&& entries) { postRows(reading, request, std::move(entries)); };
        QList<CaseFolder::Entry> listing;
        QStringList keys;
        CaseFolder::read(folder, nameFilters, CaseFolder::Access::ReadAndWrite, firstBatch, largestBatch, cancelled,
                         [&](QList<CaseFolder::Entry>&& entries) {
                             for (const CaseFolder::Entry& entry : entries)
                                 keys.append(searchKey(entry.name));
                             listing.append(entries);
                             if (arrangement.isFolderOrder())
                                 deliver(std::move(entries));
                         });
        if (cancelled())
            return;
        if (!arrangement.isFolderOrder())
            inBatches(arranged(listing, keys, arrangement, cancelled), deliver);
        reading.post(request, [this, listing, keys] {
            m_files = listing;
            m_searchKeys = keys;
            finishListing();
        });
    });
}

// Rows of another sort order or search text, from the listing at hand; a
// read under way is started again with the new arrangement instead.
void SCListView::rearrange()
{
    if (m_readingFolder) {
        updateList();
        return;
    }
    const CaseFolder::Entry* current = entryOf(currentItem());
    m_keepCurrent = current ? current->localName : QByteArray();
    m_listing = true;
    m_filledRows = 0;
    LatestRequest::start(m_reading, [this, listing = m_files, keys = m_searchKeys,
                                     arrangement = m_arrangement](LatestRequest& reading, quint64 request) {
        const auto cancelled = [&] { return !reading.isCurrent(request); };
        inBatches(arranged(listing, keys, arrangement, cancelled),
                  [&](QList<CaseFolder::Entry>&& entries) { postRows(reading, request, std::move(entries)); });
        reading.post(request, [this] { finishListing(); });
    });
}

// On the worker: the files that match the search, in the chosen order.
QList<CaseFolder::Entry> SCListView::arranged(const QList<CaseFolder::Entry>& listing, const QStringList& keys,
                                              const Arrangement& arrangement, const CaseFolder::Cancelled& cancelled)
{
    QList<CaseFolder::Entry> rows;
    if (arrangement.searchKey.isEmpty()) {
        rows = listing;
    } else {
        for (qsizetype i = 0; i < listing.size(); ++i) {
            if (keys.at(i).contains(arrangement.searchKey))
                rows.append(listing.at(i));
        }
    }
    if (cancelled())
        return {};
    // The listing is in name order; equal times keep it.
    if (arrangement.column == 1)
        std::stable_sort(rows.begin(), rows.end(), [](const CaseFolder::Entry& a, const CaseFolder::Entry& b) {
            return a.changeTime < b.changeTime;
        });
    if (arrangement.order == Qt::DescendingOrder)
        std::reverse(rows.begin(), rows.end());
    return rows;
}

void SCListView::postRows(LatestRequest& reading, quint64 request, QList<CaseFolder::Entry>&& entries)
{
    auto batch = std::make_shared<Batch>();
    batch->rows.reserve(entries.size());
    for (const CaseFolder::Entry& entry : entries)
        batch->rows.append(new QTreeWidgetItem(
            QStringList{entry.completeBaseName(), CaseFolder::changeTimeText(entry.changeTime)}));
    batch->entries = std::move(entries);
    reading.post(request, [this, batch] { takeBatch(*batch); });
}

// The rows of the listing before stay in view and are overwritten in place
// where they differ, so that a refresh of an unchanged folder costs the view
// nothing and keeps its scroll position; rows beyond the old ones are added.
void SCListView::takeBatch(Batch& batch)
{
    const int existing = topLevelItemCount();
    const qsizetype inPlace = std::clamp<qsizetype>(existing - m_filledRows, 0, batch.entries.size());
    // A change note per row makes the view look the row up again, which
    // costs more than the whole batch otherwise; one repaint serves them all.
    {
        const QSignalBlocker quiet(model());
        for (qsizetype i = 0; i < inPlace; ++i) {
            QTreeWidgetItem* row = topLevelItem(m_filledRows + int(i));
            const QTreeWidgetItem* fresh = batch.rows.at(i);
            for (int column = 0; column < 2; ++column) {
                if (row->text(column) != fresh->text(column))
                    row->setText(column, fresh->text(column));
            }
            m_entries[m_filledRows + i] = batch.entries.at(i);
        }
    }
    if (inPlace > 0)
        viewport()->update();
    m_entries.append(batch.entries.mid(inPlace));
    addTopLevelItems(batch.rows.mid(inPlace));
    batch.rows.remove(inPlace, batch.rows.size() - inPlace);

    const int first = m_filledRows;
    m_filledRows += int(batch.entries.size());
    if (m_keepCurrent.isEmpty())
        return;
    for (int i = first; i < m_filledRows; ++i) {
        if (m_entries.at(i).localName == m_keepCurrent) {
            if (currentItem() != topLevelItem(i))
                setCurrentItem(topLevelItem(i));
            m_keepCurrent.clear();
            break;
        }
    }
}

void SCListView::finishListing()
{
    const int surplus = topLevelItemCount() - m_filledRows;
    if (m_filledRows == 0)
        clearRows();
    else if (surplus > 0)
        model()->removeRows(m_filledRows, surplus);
    m_entries.resize(m_filledRows);
    m_keepCurrent.clear();
    m_listing = false;
    m_readingFolder = false;
    emit listingFinished();
}

// Half the page width of the application style; half the list's own width
// when the style does not know that metric.
void SCListView::updateNameColumnWidth()
{
    const int pageWidth = QApplication::style()->pixelMetric(
        QStyle::PixelMetric(SCAppStyle::PM_PageWidth));
    setColumnWidth(0, (pageWidth > 0 ? pageWidth : width()) / 2);
}
