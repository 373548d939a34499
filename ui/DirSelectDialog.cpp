#include "DirSelectDialog.h"

#include "CaseFolder.h"
#include "LatestRequest.h"
#include "SCColors.h"

#include <QFileSystemModel>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

QString caseFileCountText(uint count)
{
    QString text = QStringLiteral("Das gewählte Verzeichnis enthält ");
    if (count == 0)
        return text + QStringLiteral("keinen Steuerfall.");
    if (count == 1)
        return text + QStringLiteral("1 Steuerfall.");
    return text + QString::number(count) + QStringLiteral(" Steuerfälle.");
}

} // namespace

DirSelectDialog::DirSelectDialog(QWidget* parent, Qt::WindowFlags flags)
    : QDialog(parent, flags)
    , m_mainLayout(new QVBoxLayout(this))
    , m_buttonLayout(new QHBoxLayout)
    , m_okButton(new QPushButton(QStringLiteral("&OK"), this))
    , m_cancelButton(new QPushButton(QStringLiteral("&Abbruch"), this))
    , m_infoLabel(new QLabel(this))
    , m_tree(new QTreeView(this))
    , m_model(new QFileSystemModel(this))
    , m_countDir(QString(), QString(), QDir::Name | QDir::IgnoreCase, QDir::Files)
    , m_counting(LatestRequest::create(this))
{
    setModal(true);
    setWindowTitle(QStringLiteral("Verzeichnis auswählen"));

    QPalette infoPalette = m_infoLabel->palette();
    infoPalette.setColor(QPalette::Window,
                         SCColors::getColor(QString::fromLatin1(SCColors::keyDefaultBkg),
                                            QColor(239, 242, 243, 255)));

    // The model fills folders lazily, in the background, as the tree opens them.
    m_model->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot);
    m_model->setRootPath(QStringLiteral("/"));
    m_model->sort(0, Qt::AscendingOrder);

    m_tree->setModel(m_model);
    for (int column = 1; column <= 3; ++column)
        m_tree->hideColumn(column);
    m_tree->setMinimumWidth(400);
    m_tree->header()->hide();
    m_mainLayout->addWidget(m_tree);

    m_infoLabel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    // The layout margin is what Qt 6 offers for the default child margin.
    m_infoLabel->setMargin(style()->pixelMetric(QStyle::PM_LayoutLeftMargin));
    m_infoLabel->setPalette(infoPalette);
    m_infoLabel->setAutoFillBackground(true);
    m_mainLayout->addWidget(m_infoLabel);

    m_buttonLayout->addStretch();
    m_buttonLayout->addWidget(m_okButton);
    m_buttonLayout->addWidget(m_cancelButton);
    m_mainLayout->addLayout(m_buttonLayout);

    loadValues();

    // Only a click counts the folder's files; walking the tree with the keys
    // leaves the label as it is.
    connect(m_tree, &QTreeView::clicked, this, &DirSelectDialog::changeDir);
    connect(m_okButton, &QPushButton::clicked, this, &DirSelectDialog::accept);
    connect(m_cancelButton, &QPushButton::clicked, this, &DirSelectDialog::reject);
}

DirSelectDialog::~DirSelectDialog()
{
    m_counting->detach();
}

void DirSelectDialog::setFileFilter(const QStringList& nameFilters)
{
    m_countDir.setNameFilters(nameFilters);
    loadValues();
}

void DirSelectDialog::setDirectory(const QString& path)
{
    // index() builds the model's items along the path at once, although the
    // model reads folders lazily otherwise.
    const QModelIndex index = path.isEmpty() ? QModelIndex() : m_model->index(path);
    m_tree->setCurrentIndex(index);
    for (QModelIndex folder = index; folder.isValid(); folder = folder.parent())
        m_tree->expand(folder);
    if (index.isValid())
        m_tree->scrollTo(index);
    m_countDir.setPath(path);
    loadValues();
}

QString DirSelectDialog::directory() const
{
    const QModelIndex current = m_tree->currentIndex();
    return current.isValid() ? m_model->filePath(current) : QString();
}

void DirSelectDialog::loadValues()
{
    m_infoLabel->setText(QStringLiteral("Die Steuerfälle werden gezählt..."));
    LatestRequest::start(m_counting, [this, folder = m_countDir.path(),
                                      nameFilters = m_countDir.nameFilters()](LatestRequest& counting,
                                                                              quint64 request) {
        const int files =
            CaseFolder::count(folder, nameFilters, [&] { return !counting.isCurrent(request); });
        counting.post(request, [this, files] { m_infoLabel->setText(caseFileCountText(uint(files))); });
    });
}

void DirSelectDialog::changeDir(const QModelIndex& index)
{
    m_countDir.setPath(m_model->filePath(index));
    loadValues();
}
