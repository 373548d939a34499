#pragma once

#include <QString>

class QFont;

// Breaks text into lines no wider than width pixels in font, for tool tips.
// Lines break after white space, "/", "-" or "_"; a piece without such a
// break point that is wider than width keeps a line of its own. Line breaks
// already in the text are kept. The lines are joined with "<br>" when html is
// set, otherwise with line feeds.
QString wordWrap(const QString& text, int width, const QFont& font, bool html);
