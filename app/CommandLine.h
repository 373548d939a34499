#pragma once

#include <QString>
#include <QStringList>

// What the launcher is asked to do on its command line:
//
//   startcenter [--new MODE] [--] [FILE...]
//   startcenter --help | --version
//
// The command line is read before any window or display exists, so that
// --help, --version and mistakes are answered on a plain terminal. A later
// start hands what it was asked to the running launcher in the form of
// handOverArguments(), which the running one reads with the same parser.
class CommandLine
{
public:
    enum Request {
        Start,     // bring up the launcher (and open the files, start the new case)
        Help,      // print the usage on the standard output, exit code 0
        Version,   // print the version on the standard output, exit code 0
        Invalid    // print error() on the error output, exit code 2
    };

    // arguments start with the program, as the process got them; modes are
    // the internal mode names --new accepts. Relative file names are made
    // absolute against the current folder. incomplete tells that the list was
    // cut on its way from another start.
    static CommandLine parse(const QStringList& arguments, const QStringList& modes, bool incomplete = false);
    // The process's arguments as text, in the file system's encoding.
    static QStringList fromArgv(int argc, char** argv);

    Request request() const { return m_request; }
    QStringList files() const { return m_files; }
    QString newMode() const { return m_newMode; }
    bool isIncomplete() const { return m_incomplete; }
    QString error() const { return m_error; }

    // For Help, Version and Invalid: writes the answer and returns the exit
    // code; for Start nothing is written and -1 is returned.
    int answer() const;

    // The arguments a later start registers for the running launcher: the
    // program, "--new MODE" when asked, and the absolute files after "--".
    QStringList handOverArguments() const;

private:
    QString helpText() const;

    Request m_request = Start;
    QString m_program;
    QStringList m_modes;
    QStringList m_files;
    QString m_newMode;
    QString m_error;
    bool m_incomplete = false;
};
