#pragma once

#include <QString>
#include <QStringView>

// A file-name pattern as QDir applies its name filters: "*" stands for any
// characters, "?" for one, "[...]" for one of a set ("[!...]" for one not in
// it, "a-z" for a range); the whole name must match, case ignored. Matched
// directly, without compiling a regular expression: the case folders are
// filtered with it, and the expression engine alone would bring half a
// megabyte of code into memory at start.
class WildcardPattern
{
public:
    explicit WildcardPattern(const QString& pattern);

    bool matches(QStringView name) const;

private:
    // Whether the set starting at m_pattern[at] ("[" already passed) holds
    // c; end receives the index after its "]". False with end = -1 when
    // the set is not closed: then the "[" is a plain character.
    bool setHolds(qsizetype at, QChar c, qsizetype* end) const;

    QString m_pattern;
};
