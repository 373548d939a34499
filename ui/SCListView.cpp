#include "SCListView.h"

#include "SCAppStyle.h"

#include "LatestRequest.h"

#include <QApplication>
#include <QStyle>

namespace {

// Rows per batch: small enough that adding one batch stays far below a
// frame, large enough that the event loop is not flooded.
constexpr int rowsPerBatch = 1000;

} // namespace

// Rows built on the worker, still owned here until the list takes them.
struct SCListView::Batch
{
    QList<CaseFolder::Entry> entries;
    QList<QTreeWidgetItem*> rows;
    ~Batch() { qDeleteAll(rows); }
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
    m_replacing = topLevelItemCount() > 0;
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
    updateNameColumnWidth();
    LatestRequest::start(m_reading, [this, folder = m_rootDir, nameFilters = m_nameFilters](
                                        LatestRequest& reading, quint64 request) {
        CaseFolder::read(
            folder, nameFilters, CaseFolder::Access::ReadAndWrite, rowsPerBatch,
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

void SCListView::takeBatch(Batch& batch)
{
    if (m_replacing) {
        m_replacing = false;
        clearRows();
    }
    const qsizetype first = m_entries.size();
    m_entries.append(batch.entries);
    addTopLevelItems(batch.rows);
    batch.rows.clear();

    if (m_keepCurrent.isEmpty())
        return;
    for (qsizetype i = first; i < m_entries.size(); ++i) {
        if (m_entries.at(i).localName == m_keepCurrent) {
            setCurrentItem(topLevelItem(int(i)));
            m_keepCurrent.clear();
            break;
        }
    }
}

void SCListView::finishListing()
{
    if (m_replacing) {
        m_replacing = false;
        clearRows();
    }
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
