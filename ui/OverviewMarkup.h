#pragma once

#include <QString>

// How text taken from files enters the overview document.
enum class Markup {
    Escape,          // every "<", ">" and "&" as an entity
    KeepSimpleTags,  // the same, except the plain tags b, i, u, br and p (any case, no attributes)
};

QString escapeMarkup(const QString& text, Markup markup);
