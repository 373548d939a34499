#include "SCListView.h"

#include "SCAppStyle.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QStyle>

#include <ctime>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The local time of the last change of the files of one folder, as
// "dd.MM.yyyy hh:mm". QFileInfo::lastModified() plus QDateTime::toString()
// cost a time-zone lookup and a format parse per file, more than the row
// itself; here each file takes one stat relative to the open folder, one
// localtime_r() and a few digits.
class ChangeTimeReader
{
public:
    explicit ChangeTimeReader(const QString& folder)
        : m_folder(open(QFile::encodeName(folder.isEmpty() ? QStringLiteral(".") : folder).constData(),
                        O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        tzset();   // follow a change of the time zone since the last listing
    }
    ~ChangeTimeReader()
    {
        if (m_folder >= 0)
            close(m_folder);
    }
    ChangeTimeReader(const ChangeTimeReader&) = delete;
    ChangeTimeReader& operator=(const ChangeTimeReader&) = delete;

    // Empty when the file has gone since the folder was listed.
    QString changeTime(const QString& fileName) const
    {
        struct stat status;
        struct tm local;
        if (m_folder < 0
            || fstatat(m_folder, QFile::encodeName(fileName).constData(), &status, 0) != 0
            || !localtime_r(&status.st_mtime, &local))
            return QString();
        QChar text[16];
        const auto twoDigits = [&text](int at, int value) {
            text[at] = QLatin1Char(char('0' + value / 10 % 10));
            text[at + 1] = QLatin1Char(char('0' + value % 10));
        };
        const int year = local.tm_year + 1900;
        twoDigits(0, local.tm_mday);
        text[2] = u'.';
        twoDigits(3, local.tm_mon + 1);
        text[5] = u'.';
        twoDigits(6, year / 100);
        twoDigits(8, year % 100);
        text[10] = u' ';
        twoDigits(11, local.tm_hour);
        text[13] = u':';
        twoDigits(14, local.tm_min);
        return QString(text, 16);
    }

private:
    int m_folder;
};

} // namespace

SCListView::SCListView(QWidget* parent)
    : QTreeWidget(parent)
    , m_dir(QString(), QString(), QDir::Name | QDir::IgnoreCase,
            QDir::Files | QDir::Readable | QDir::Writable)
{
    QFont listFont = parent ? parent->font() : font();
    listFont.setWeight(QFont::Normal);
    setFont(listFont);
    setUniformRowHeights(true);
    setHeaderLabels({QStringLiteral("Dateiname"), QStringLiteral("Letzte Änderung")});
}

SCListView::~SCListView() = default;

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
    m_dir.setNameFilters(nameFilters);
}

void SCListView::updateList()
{
    clear();
    m_dir.refresh();
    const QFileInfoList entries = m_dir.entryInfoList();
    const ChangeTimeReader changeTimes(m_dir.path());
    QList<QTreeWidgetItem*> rows;
    rows.reserve(entries.size());
    for (const QFileInfo& entry : entries) {
        rows.append(new QTreeWidgetItem(
            QStringList{entry.completeBaseName(), changeTimes.changeTime(entry.fileName())}));
    }
    addTopLevelItems(rows);
    updateNameColumnWidth();
}

QString SCListView::selectedFileName() const
{
    const QTreeWidgetItem* row = currentItem();
    return row ? m_rootDir + row->text(0) : QString();
}

QStringList SCListView::fileNames() const
{
    return m_dir.entryList();
}

void SCListView::pointAt(const QString& folder)
{
    m_rootDir = folder;
    m_dir.setPath(folder);
}

// Half the page width of the application style; half the list's own width
// when the style does not know that metric.
void SCListView::updateNameColumnWidth()
{
    const int pageWidth = QApplication::style()->pixelMetric(
        QStyle::PixelMetric(SCAppStyle::PM_PageWidth));
    setColumnWidth(0, (pageWidth > 0 ? pageWidth : width()) / 2);
}
