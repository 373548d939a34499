#pragma once

#include "ActionPage.h"
#include "ModePage.h"

// The pages of the program modes. Each sets only its texts; the dated modes
// use the action page, the two undated ones the list-style page.

class ModePageNormal : public ActionPage
{
    Q_OBJECT
public:
    explicit ModePageNormal(QWidget* parent = nullptr);
};

class ModePageVorweg : public ActionPage
{
    Q_OBJECT
public:
    explicit ModePageVorweg(QWidget* parent = nullptr);
};

class ModePageErmaess : public ActionPage
{
    Q_OBJECT
public:
    explicit ModePageErmaess(QWidget* parent = nullptr);
};

class ModePageEinur : public ActionPage
{
    Q_OBJECT
public:
    explicit ModePageEinur(QWidget* parent = nullptr);
};

class ModePageEinurVor : public ActionPage
{
    Q_OBJECT
public:
    explicit ModePageEinurVor(QWidget* parent = nullptr);
};

class ModePageFest : public ActionPage
{
    Q_OBJECT
public:
    explicit ModePageFest(QWidget* parent = nullptr);
};

class ModePageNebenk : public ModePage
{
    Q_OBJECT
public:
    explicit ModePageNebenk(QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
};

class ModePageZulage : public ModePage
{
    Q_OBJECT
public:
    explicit ModePageZulage(QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
};
