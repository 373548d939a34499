#pragma once

#include <QDialog>
#include <QDir>
#include <QStringList>

#include <memory>

class QFileSystemModel;
class LatestRequest;
class QHBoxLayout;
class QLabel;
class QModelIndex;
class QPushButton;
class QTreeView;
class QVBoxLayout;

// The modal folder chooser for the working folder. While the user clicks
// through the folder tree, a label tells how many case files the clicked
// folder holds.
class DirSelectDialog : public QDialog
{
    Q_OBJECT

public:
    explicit DirSelectDialog(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~DirSelectDialog() override;

    // The patterns of the case files that are counted.
    void setFileFilter(const QStringList& nameFilters);
    // Makes the folder the tree's current, expanded item (none when the tree
    // has no item for it) and counts its case files.
    void setDirectory(const QString& path);
    // The full path of the current item; empty when there is none, which
    // counts as no choice.
    QString directory() const;
    // Counts the case files of the folder last chosen on a worker and shows
    // the number when it is known; a newer choice overtakes the count.
    void loadValues();

public slots:
    void changeDir(const QModelIndex& index);

private:
    QVBoxLayout* m_mainLayout;
    QHBoxLayout* m_buttonLayout;
    QPushButton* m_okButton;
    QPushButton* m_cancelButton;
    QLabel* m_infoLabel;
    QTreeView* m_tree;
    QFileSystemModel* m_model;
    QDir m_countDir;
    std::shared_ptr<LatestRequest> m_counting;
};
