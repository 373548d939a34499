#pragma once

#include <QString>
#include <QThread>

// Runs the hidden version check of the update program off the GUI thread.
// It is given everything it needs before it starts and touches nothing but
// its own result and the update program.
class CheckVersionBackgroundThread : public QThread
{
    Q_OBJECT

public:
    explicit CheckVersionBackgroundThread(const QString& updateProgram, QObject* parent = nullptr);

    // The update program's exit code, valid once the thread has finished.
    int result() const { return m_result; }

protected:
    void run() override;

private:
    const QString m_updateProgram;
    int m_result = 0;
};
