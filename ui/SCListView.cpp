#include "SCListView.h"

#include "SCAppStyle.h"

#include "LatestRequest.h"

#include <QApplication>
#include <QStyle>
#include <QThreadPool>

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
        clearRows();   // rows of other patterns must not stay in view
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

QString SCListView::selectedFileName() const
{
    const QTreeWidgetItem* row = currentItem();
    return row ? m_rootDir + row->text(0) : QString();
}

QStringList SCListView::fileNames() const
{
    QStringList names;
    names.reserve(m_entries.size());
    for (const CaseFolder::Entry& entry : m_entries)
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
    clearRows();
}

void SCListView::clearRows()
{
    clear();
    m_entries.clear();
}

void SCListView::startListing()
{
    m_listing = true;
    m_filledRows = 0;
    updateNameColumnWidth();
    LatestRequest::start(m_reading, [this, folder = m_rootDir, nameFilters = m_nameFilters](
                                        LatestRequest& reading, quint64 request) {
        CaseFolder::read(
            folder, nameFilters, CaseFolder::Access::ReadAndWrite, firstBatch, largestBatch,
            [&] { return !reading.isCurrent(request); },
            [&](QList<CaseFolder::Entry>&& entries) {
                auto batch = std::make_shared<Batch>();
                batch->rows.reserve(entries.size());
                for (const CaseFolder::Entry& entry : entries)
                    batch->rows.append(new QTreeWidgetItem(
                        QStringList{entry.completeBaseName(), CaseFolder::changeTimeText(entry.changeTime)}));
                batch->entries = std::move(entries);
                reading.post(request, [this, batch] { takeBatch(*batch); });
            });
        reading.post(request, [this] { finishListing(); });
    });
}

// The rows of the listing before stay in view and are overwritten in place
// where they differ, so that a refresh of an unchanged folder costs the view
// nothing and keeps its scroll position; rows beyond the old ones are added.
void SCListView::takeBatch(Batch& batch)
{
    const int existing = topLevelItemCount();
    const qsizetype inPlace = std::clamp<qsizetype>(existing - m_filledRows, 0, batch.entries.size());
    for (qsizetype i = 0; i < inPlace; ++i) {
        QTreeWidgetItem* row = topLevelItem(m_filledRows + int(i));
        const QTreeWidgetItem* fresh = batch.rows.at(i);
        for (int column = 0; column < 2; ++column) {
            if (row->text(column) != fresh->text(column))
                row->setText(column, fresh->text(column));
        }
        m_entries[m_filledRows + i] = batch.entries.at(i);
    }
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
