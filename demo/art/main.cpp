// Paints every picture of the sample installation and writes them as PNG files.
//
//   demoart <container folder> <loose folder> [<icon theme folder>]
//
// Pictures meant for the image container go into the first folder; pictures
// that lie loose in the installation's media folder (and there replace a
// container entry of the same name) go into the second. The application icon
// for the desktop goes into the third, laid out like an icon theme
// (<size>x<size>/apps/<name>.png); without a third folder it is not painted.
//
// All icons share one style: light fills with soft gradients, a dark blue
// outline, a small drop shadow and, where a picture needs a second meaning, a
// round badge in the lower right corner. Icons are drawn on a 64 x 64 grid and
// scaled to their output size.

#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>

#include <cstdio>
#include <functional>
#include <vector>

namespace {

// --- Palette -----------------------------------------------------------------

const QColor ink(0, 30, 82);
const QColor designBlue(0, 30, 82);
const QColor royalBlue(50, 77, 127);
const QColor signalBlue(68, 122, 210);
const QColor skyBlue(150, 190, 240);
const QColor paperTop(255, 255, 255);
const QColor paperBottom(222, 231, 243);
const QColor lineBlue(150, 175, 210);
const QColor gold(240, 170, 30);
const QColor green(60, 160, 70);
const QColor blue(50, 110, 200);
const QColor red(205, 60, 45);
const QColor slate(90, 100, 115);

constexpr qreal grid = 64.0;   // the icon drawing grid

QPen inkPen(qreal width = 2.0)
{
    return QPen(ink, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

QLinearGradient vertical(const QRectF& r, const QColor& top, const QColor& bottom)
{
    QLinearGradient g(r.topLeft(), r.bottomLeft());
    g.setColorAt(0.0, top);
    g.setColorAt(1.0, bottom);
    return g;
}

QLinearGradient diagonal(const QRectF& r, const QColor& from, const QColor& to)
{
    QLinearGradient g(r.topLeft(), r.bottomRight());
    g.setColorAt(0.0, from);
    g.setColorAt(1.0, to);
    return g;
}

// A colour's own gradient: lighter above, darker below.
QLinearGradient shaded(const QRectF& r, const QColor& base)
{
    return vertical(r, base.lighter(135), base.darker(115));
}

// A soft shadow below and to the right of a shape.
void dropShadow(QPainter& p, const QPainterPath& shape)
{
    p.save();
    p.setPen(Qt::NoPen);
    for (int i = 3; i >= 1; --i) {
        p.setBrush(QColor(0, 20, 60, 18 + 8 * (3 - i)));
        p.drawPath(shape.translated(0.5 * i + 0.5, 0.8 * i + 0.8));
    }
    p.restore();
}

// Fills a shape, outlines it in ink, and gives it a shadow.
void solid(QPainter& p, const QPainterPath& shape, const QBrush& fill, qreal outline = 2.0)
{
    dropShadow(p, shape);
    p.setBrush(fill);
    p.setPen(inkPen(outline));
    p.drawPath(shape);
}

// A glossy highlight over the upper part of a shape.
void gloss(QPainter& p, const QPainterPath& shape, qreal alpha = 0.45)
{
    const QRectF r = shape.boundingRect();
    p.save();
    p.setClipPath(shape);
    QLinearGradient g(r.topLeft(), QPointF(r.left(), r.center().y()));
    g.setColorAt(0.0, QColor(255, 255, 255, int(255 * alpha)));
    g.setColorAt(1.0, QColor(255, 255, 255, 0));
    p.setPen(Qt::NoPen);
    p.setBrush(g);
    p.drawRect(r);
    p.restore();
}

QPainterPath circle(QPointF c, qreal r)
{
    QPainterPath path;
    path.addEllipse(c, r, r);
    return path;
}

QPainterPath roundRect(const QRectF& r, qreal radius)
{
    QPainterPath path;
    path.addRoundedRect(r, radius, radius);
    return path;
}

// A text outline centred on a point, in the bold sans face.
QPainterPath glyphs(const QString& text, QPointF centre, qreal pixelSize)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setBold(true);
    font.setPixelSize(qRound(pixelSize * 4));   // large, then scaled down: smoother outlines
    QPainterPath path;
    path.addText(0, 0, font, text);
    QTransform t;
    t.scale(0.25, 0.25);
    path = t.map(path);
    const QRectF box = path.boundingRect();
    path.translate(centre - box.center());
    return path;
}

void strokeLine(QPainter& p, QPointF a, QPointF b, const QColor& colour, qreal width)
{
    p.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawLine(a, b);
}

// --- Badges --------------------------------------------------------------------

enum class Symbol { Plus, ArrowRight, ArrowUp, ArrowDown, Euro, Percent, Paragraph, Question, Refresh };

void drawSymbol(QPainter& p, Symbol symbol, QPointF c, qreal r)
{
    const QColor white(255, 255, 255);
    const qreal w = r * 0.32;
    const qreal a = r * 0.52;
    auto arrowHead = [&](QPointF tip, QPointF back1, QPointF back2) {
        QPainterPath head;
        head.moveTo(back1);
        head.lineTo(tip);
        head.lineTo(back2);
        p.setPen(QPen(white, w, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        p.setBrush(Qt::NoBrush);
        p.drawPath(head);
    };
    switch (symbol) {
    case Symbol::Plus:
        strokeLine(p, c - QPointF(a, 0), c + QPointF(a, 0), white, w);
        strokeLine(p, c - QPointF(0, a), c + QPointF(0, a), white, w);
        break;
    case Symbol::ArrowRight:
        strokeLine(p, c - QPointF(a, 0), c + QPointF(a, 0), white, w);
        arrowHead(c + QPointF(a, 0), c + QPointF(a * 0.1, -a * 0.8), c + QPointF(a * 0.1, a * 0.8));
        break;
    case Symbol::ArrowUp:
        strokeLine(p, c + QPointF(0, a), c - QPointF(0, a), white, w);
        arrowHead(c - QPointF(0, a), c + QPointF(-a * 0.8, -a * 0.1), c + QPointF(a * 0.8, -a * 0.1));
        break;
    case Symbol::ArrowDown:
        strokeLine(p, c - QPointF(0, a), c + QPointF(0, a), white, w);
        arrowHead(c + QPointF(0, a), c + QPointF(-a * 0.8, a * 0.1), c + QPointF(a * 0.8, a * 0.1));
        break;
    case Symbol::Refresh: {
        const QRectF ring(c - QPointF(a, a), QSizeF(2 * a, 2 * a));
        p.setPen(QPen(white, w * 0.8, Qt::SolidLine, Qt::RoundCap));
        p.setBrush(Qt::NoBrush);
        p.drawArc(ring, 100 * 16, 280 * 16);
        const QPointF tip = c + QPointF(a * qCos(qDegreesToRadians(100.0)), -a * qSin(qDegreesToRadians(100.0)));
        QPainterPath head;
        head.moveTo(tip + QPointF(-a * 0.55, -a * 0.45));
        head.lineTo(tip + QPointF(a * 0.3, 0));
        head.lineTo(tip + QPointF(-a * 0.45, a * 0.55));
        head.closeSubpath();
        p.setPen(Qt::NoPen);
        p.setBrush(white);
        p.drawPath(head);
        break;
    }
    case Symbol::Euro:
    case Symbol::Percent:
    case Symbol::Paragraph:
    case Symbol::Question: {
        static const QString texts[] = {QStringLiteral("\u20AC"), QStringLiteral("%"), QStringLiteral("\u00A7"),
                                        QStringLiteral("?")};
        const QString& text = texts[int(symbol) - int(Symbol::Euro)];
        p.setPen(Qt::NoPen);
        p.setBrush(white);
        p.drawPath(glyphs(text, c, r * 1.25));
        break;
    }
    }
}

void drawBadge(QPainter& p, QPointF c, qreal r, const QColor& base, Symbol symbol)
{
    const QPainterPath disc = circle(c, r);
    dropShadow(p, disc);
    p.setBrush(shaded(disc.boundingRect(), base));
    p.setPen(QPen(Qt::white, 2.5));
    p.drawPath(disc);
    p.setBrush(Qt::NoBrush);
    p.setPen(inkPen(1.5));
    p.drawPath(circle(c, r + 1.25));
    drawSymbol(p, symbol, c, r);
    gloss(p, disc, 0.35);
}

// --- Objects -------------------------------------------------------------------

enum class PageContent { Lines, Chart, Table, Plain };

QPainterPath pageShape(const QRectF& r, qreal fold)
{
    QPainterPath path;
    path.moveTo(r.topLeft());
    path.lineTo(r.right() - fold, r.top());
    path.lineTo(r.right(), r.top() + fold);
    path.lineTo(r.bottomRight());
    path.lineTo(r.bottomLeft());
    path.closeSubpath();
    return path;
}

void drawPage(QPainter& p, const QRectF& r, PageContent content = PageContent::Lines,
              const QColor& paper = paperBottom)
{
    const qreal fold = r.width() * 0.28;
    solid(p, pageShape(r, fold), diagonal(r, paperTop, paper));

    QPainterPath corner;
    corner.moveTo(r.right() - fold, r.top());
    corner.lineTo(r.right() - fold, r.top() + fold);
    corner.lineTo(r.right(), r.top() + fold);
    corner.closeSubpath();
    p.setBrush(QColor(196, 212, 236));
    p.setPen(inkPen(1.5));
    p.drawPath(corner);

    const qreal left = r.left() + r.width() * 0.16;
    const qreal right = r.right() - r.width() * 0.16;
    switch (content) {
    case PageContent::Lines:
        for (qreal y = r.top() + fold + 4; y < r.bottom() - 5; y += 6) {
            const qreal end = (int(y) % 3 == 0) ? right - r.width() * 0.18 : right;
            strokeLine(p, QPointF(left, y), QPointF(end, y), lineBlue, 2.2);
        }
        strokeLine(p, QPointF(left, r.top() + fold * 0.45), QPointF(r.right() - fold - 4, r.top() + fold * 0.45),
                   signalBlue, 3);
        break;
    case PageContent::Chart: {
        strokeLine(p, QPointF(left, r.top() + fold * 0.45), QPointF(r.right() - fold - 4, r.top() + fold * 0.45),
                   signalBlue, 3);
        const QRectF area(left, r.top() + fold + 5, right - left, r.bottom() - r.top() - fold - 11);
        strokeLine(p, area.bottomLeft(), area.bottomRight(), lineBlue, 1.5);
        strokeLine(p, area.bottomLeft(), area.topLeft(), lineBlue, 1.5);
        QPainterPath curve;
        curve.moveTo(area.left() + 2, area.bottom() - 4);
        curve.cubicTo(area.left() + area.width() * 0.35, area.bottom() - 6,
                      area.left() + area.width() * 0.45, area.top() + area.height() * 0.55,
                      area.right() - 1, area.top() + 2);
        p.setBrush(Qt::NoBrush);
        p.setPen(QPen(green, 2.6, Qt::SolidLine, Qt::RoundCap));
        p.drawPath(curve);
        break;
    }
    case PageContent::Table: {
        const QRectF table(left - 2, r.top() + fold + 1, right - left + 4, r.bottom() - r.top() - fold - 6);
        p.setPen(Qt::NoPen);
        p.setBrush(signalBlue);
        p.drawRect(QRectF(table.left(), table.top(), table.width(), 5));
        const int rows = 5;
        for (int i = 1; i <= rows; ++i) {
            const qreal y = table.top() + 5 + i * (table.height() - 5) / rows;
            strokeLine(p, QPointF(table.left(), y), QPointF(table.right(), y), lineBlue, 1.2);
        }
        strokeLine(p, QPointF(table.left() + table.width() * 0.4, table.top()),
                   QPointF(table.left() + table.width() * 0.4, table.bottom()), lineBlue, 1.2);
        break;
    }
    case PageContent::Plain:
        break;
    }
}

void drawFolder(QPainter& p, const QRectF& r, bool open)
{
    const QColor back(236, 172, 52);
    const QColor front(255, 214, 110);
    const qreal tab = r.height() * 0.16;

    QPainterPath body;
    body.moveTo(r.left(), r.top() + tab);
    body.lineTo(r.left() + r.width() * 0.08, r.top());
    body.lineTo(r.left() + r.width() * 0.38, r.top());
    body.lineTo(r.left() + r.width() * 0.46, r.top() + tab);
    body.lineTo(r.right(), r.top() + tab);
    body.lineTo(r.right(), r.bottom());
    body.lineTo(r.left(), r.bottom());
    body.closeSubpath();
    solid(p, body, vertical(r, back.lighter(110), back.darker(110)));

    QPainterPath flap;
    if (open) {
        flap.moveTo(r.left() + r.width() * 0.16, r.top() + r.height() * 0.38);
        flap.lineTo(r.right() + r.width() * 0.06, r.top() + r.height() * 0.38);
        flap.lineTo(r.right() - r.width() * 0.06, r.bottom());
        flap.lineTo(r.left(), r.bottom());
        flap.closeSubpath();
    } else {
        flap.addRoundedRect(QRectF(r.left(), r.top() + tab * 2.1, r.width(), r.height() - tab * 2.1), 1.5, 1.5);
    }
    p.setBrush(vertical(flap.boundingRect(), front.lighter(108), front.darker(104)));
    p.setPen(inkPen());
    p.drawPath(flap);
    gloss(p, flap, 0.5);
}

void drawGlobe(QPainter& p, QPointF c, qreal r)
{
    const QPainterPath ball = circle(c, r);
    QRadialGradient sea(c - QPointF(r * 0.35, r * 0.4), r * 1.5);
    sea.setColorAt(0.0, QColor(170, 215, 255));
    sea.setColorAt(0.55, QColor(60, 130, 215));
    sea.setColorAt(1.0, QColor(20, 60, 150));
    dropShadow(p, ball);
    p.setPen(Qt::NoPen);
    p.setBrush(sea);
    p.drawPath(ball);

    p.save();
    p.setClipPath(ball);
    QPainterPath land;
    land.moveTo(c + QPointF(-r * 0.75, -r * 0.35));
    land.cubicTo(c + QPointF(-r * 0.45, -r * 0.85), c + QPointF(r * 0.05, -r * 0.7), c + QPointF(-r * 0.05, -r * 0.3));
    land.cubicTo(c + QPointF(-r * 0.15, -r * 0.05), c + QPointF(-r * 0.45, r * 0.1), c + QPointF(-r * 0.4, r * 0.45));
    land.cubicTo(c + QPointF(-r * 0.55, r * 0.6), c + QPointF(-r * 0.95, r * 0.1), c + QPointF(-r * 0.75, -r * 0.35));
    land.moveTo(c + QPointF(r * 0.25, -r * 0.15));
    land.cubicTo(c + QPointF(r * 0.6, -r * 0.55), c + QPointF(r * 1.0, -r * 0.2), c + QPointF(r * 0.8, r * 0.2));
    land.cubicTo(c + QPointF(r * 0.65, r * 0.75), c + QPointF(r * 0.3, r * 0.8), c + QPointF(r * 0.3, r * 0.45));
    land.cubicTo(c + QPointF(r * 0.3, r * 0.2), c + QPointF(r * 0.05, r * 0.1), c + QPointF(r * 0.25, -r * 0.15));
    p.setBrush(vertical(ball.boundingRect(), QColor(140, 205, 110), QColor(50, 135, 60)));
    p.drawPath(land);

    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(255, 255, 255, 110), 1.2));
    for (qreal f : {0.35, 0.75})
        p.drawEllipse(c, r * f, r);
    p.drawLine(c - QPointF(0, r), c + QPointF(0, r));
    for (qreal f : {-0.5, 0.0, 0.5}) {
        const qreal half = r * qSqrt(1 - f * f);
        p.drawLine(c + QPointF(-half, r * f), c + QPointF(half, r * f));
    }
    p.restore();

    p.setBrush(Qt::NoBrush);
    p.setPen(inkPen());
    p.drawPath(ball);
    gloss(p, ball, 0.4);
}

void drawGear(QPainter& p, QPointF c, qreal r, int teeth = 8)
{
    QPainterPath gear;
    const qreal inner = r * 0.76;
    const int steps = teeth * 4;
    for (int i = 0; i < steps; ++i) {
        const qreal angle = 2 * M_PI * (i - 0.5) / steps;
        const qreal radius = (i % 4 == 0 || i % 4 == 1) ? r : inner;
        const QPointF pt = c + QPointF(radius * qCos(angle), radius * qSin(angle));
        if (i == 0)
            gear.moveTo(pt);
        else
            gear.lineTo(pt);
    }
    gear.closeSubpath();
    gear.addEllipse(c, r * 0.3, r * 0.3);
    gear.setFillRule(Qt::OddEvenFill);
    solid(p, gear, diagonal(gear.boundingRect(), QColor(236, 240, 246), QColor(130, 145, 168)));
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(255, 255, 255, 150), 1.5));
    p.drawEllipse(c, r * 0.52, r * 0.52);
}

void drawHouse(QPainter& p, const QRectF& r)
{
    const qreal roofBottom = r.top() + r.height() * 0.45;
    const QRectF body(r.left() + r.width() * 0.14, roofBottom - 2, r.width() * 0.72, r.bottom() - roofBottom + 2);
    solid(p, roundRect(body, 1.5), vertical(body, QColor(255, 250, 238), QColor(232, 222, 200)));

    const QRectF door(body.center().x() - body.width() * 0.14, body.bottom() - body.height() * 0.62,
                      body.width() * 0.28, body.height() * 0.62);
    p.setBrush(shaded(door, blue));
    p.setPen(inkPen(1.5));
    p.drawRoundedRect(door, 1.5, 1.5);
    p.setBrush(QColor(255, 214, 110));
    p.drawEllipse(QPointF(door.right() - 2.5, door.center().y() + 1), 1.1, 1.1);

    const QRectF window(body.left() + body.width() * 0.09, body.top() + body.height() * 0.22,
                        body.width() * 0.2, body.height() * 0.28);
    for (const QRectF& w : {window, window.translated(body.width() * 0.62, 0)}) {
        p.setBrush(vertical(w, QColor(200, 230, 255), QColor(120, 170, 230)));
        p.setPen(inkPen(1.5));
        p.drawRect(w);
    }

    const QRectF chimney(r.left() + r.width() * 0.66, r.top() + r.height() * 0.08, r.width() * 0.1,
                         r.height() * 0.25);
    p.setBrush(shaded(chimney, red.darker(110)));
    p.drawRect(chimney);

    QPainterPath roof;
    roof.moveTo(r.left(), roofBottom);
    roof.lineTo(r.center().x(), r.top());
    roof.lineTo(r.right(), roofBottom);
    roof.lineTo(r.right() - 4, roofBottom + 3);
    roof.lineTo(r.center().x(), r.top() + 6);
    roof.lineTo(r.left() + 4, roofBottom + 3);
    roof.closeSubpath();
    solid(p, roof, shaded(roof.boundingRect(), red));
}

void drawBook(QPainter& p, const QRectF& r)
{
    const QRectF pages(r.left() + 4, r.top() + 3, r.width() - 4, r.height() - 3);
    solid(p, roundRect(pages, 2), vertical(pages, QColor(255, 255, 255), QColor(225, 228, 235)));
    for (qreal y = pages.top() + 4; y < pages.bottom() - 2; y += 2.5)
        strokeLine(p, QPointF(pages.right() - 0.5, y), QPointF(pages.right() - 3, y), QColor(170, 180, 200), 0.8);

    const QRectF cover(r.left(), r.top(), r.width() - 5, r.height() - 4);
    QPainterPath shape = roundRect(cover, 2.5);
    p.setBrush(diagonal(cover, blue.lighter(140), designBlue));
    p.setPen(inkPen());
    p.drawPath(shape);
    const QRectF spine(cover.left(), cover.top(), cover.width() * 0.16, cover.height());
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0, 20, 60, 90));
    p.drawRoundedRect(spine.adjusted(1, 1, 0, -1), 1.5, 1.5);
    const QRectF label(cover.left() + cover.width() * 0.3, cover.top() + cover.height() * 0.2,
                       cover.width() * 0.56, cover.height() * 0.22);
    p.setBrush(QColor(255, 255, 255, 230));
    p.setPen(Qt::NoPen);
    p.drawRoundedRect(label, 1.5, 1.5);
    strokeLine(p, QPointF(label.left() + 3, label.center().y()), QPointF(label.right() - 3, label.center().y()),
               signalBlue, 1.6);
    gloss(p, shape, 0.35);
}

void drawCompass(QPainter& p, QPointF c, qreal r)
{
    const QPainterPath rim = circle(c, r);
    solid(p, rim, diagonal(rim.boundingRect(), QColor(255, 222, 130), QColor(200, 130, 20)));
    const QPainterPath face = circle(c, r * 0.8);
    p.setBrush(vertical(face.boundingRect(), QColor(255, 255, 255), QColor(214, 228, 246)));
    p.setPen(inkPen(1.5));
    p.drawPath(face);
    for (int i = 0; i < 16; ++i) {
        const qreal angle = 2 * M_PI * i / 16;
        const qreal outer = r * 0.74;
        const qreal inner = (i % 4 == 0) ? r * 0.56 : r * 0.66;
        strokeLine(p, c + QPointF(inner * qCos(angle), inner * qSin(angle)),
                   c + QPointF(outer * qCos(angle), outer * qSin(angle)), slate, i % 4 == 0 ? 1.6 : 0.9);
    }
    p.save();
    p.translate(c);
    p.rotate(35);
    QPainterPath north;
    north.moveTo(0, -r * 0.62);
    north.lineTo(r * 0.14, 0);
    north.lineTo(-r * 0.14, 0);
    north.closeSubpath();
    QPainterPath south;
    south.moveTo(0, r * 0.62);
    south.lineTo(r * 0.14, 0);
    south.lineTo(-r * 0.14, 0);
    south.closeSubpath();
    p.setPen(inkPen(1.2));
    p.setBrush(shaded(north.boundingRect(), red));
    p.drawPath(north);
    p.setBrush(QColor(235, 238, 244));
    p.drawPath(south);
    p.setBrush(ink);
    p.drawEllipse(QPointF(0, 0), r * 0.07, r * 0.07);
    p.restore();
    gloss(p, face, 0.3);
}

void drawLifebuoy(QPainter& p, QPointF c, qreal r)
{
    QPainterPath ring = circle(c, r);
    ring.addEllipse(c, r * 0.52, r * 0.52);
    ring.setFillRule(Qt::OddEvenFill);
    solid(p, ring, QColor(250, 250, 252));
    p.save();
    p.setClipPath(ring);
    p.setPen(Qt::NoPen);
    p.setBrush(shaded(ring.boundingRect(), red));
    const QRectF box(c - QPointF(r, r), QSizeF(2 * r, 2 * r));
    for (int i = 0; i < 4; ++i)
        p.drawPie(box, (20 + 90 * i) * 16, 50 * 16);
    p.restore();
    p.setBrush(Qt::NoBrush);
    p.setPen(inkPen());
    p.drawPath(ring);
    gloss(p, ring, 0.35);
}

void drawMonitor(QPainter& p, const QRectF& r)
{
    const QRectF stand(r.center().x() - r.width() * 0.2, r.bottom() - r.height() * 0.12, r.width() * 0.4,
                       r.height() * 0.12);
    QPainterPath foot;
    foot.moveTo(r.center().x() - r.width() * 0.08, r.bottom() - r.height() * 0.22);
    foot.lineTo(r.center().x() + r.width() * 0.08, r.bottom() - r.height() * 0.22);
    foot.lineTo(stand.right(), stand.bottom());
    foot.lineTo(stand.left(), stand.bottom());
    foot.closeSubpath();
    solid(p, foot, vertical(stand, QColor(200, 208, 222), QColor(120, 132, 152)), 1.5);

    const QRectF frame(r.left(), r.top(), r.width(), r.height() * 0.78);
    solid(p, roundRect(frame, 3), vertical(frame, QColor(80, 92, 112), QColor(36, 44, 60)));
    const QRectF screen = frame.adjusted(4, 4, -4, -4);
    p.setPen(Qt::NoPen);
    p.setBrush(vertical(screen, QColor(120, 180, 245), QColor(30, 80, 170)));
    p.drawRoundedRect(screen, 1.5, 1.5);
    gloss(p, roundRect(screen, 1.5), 0.4);
}

void drawDisc(QPainter& p, QPointF c, qreal r)
{
    QPainterPath disc = circle(c, r);
    disc.addEllipse(c, r * 0.16, r * 0.16);
    disc.setFillRule(Qt::OddEvenFill);
    QConicalGradient shine(c, 30);
    shine.setColorAt(0.0, QColor(236, 240, 248));
    shine.setColorAt(0.15, QColor(200, 230, 250));
    shine.setColorAt(0.3, QColor(250, 236, 200));
    shine.setColorAt(0.45, QColor(214, 220, 232));
    shine.setColorAt(0.6, QColor(236, 214, 246));
    shine.setColorAt(0.75, QColor(210, 240, 220));
    shine.setColorAt(1.0, QColor(236, 240, 248));
    solid(p, disc, shine);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(150, 160, 180), 1.2));
    p.drawEllipse(c, r * 0.36, r * 0.36);
    p.setPen(QPen(QColor(255, 255, 255, 200), 1.0));
    p.drawEllipse(c, r * 0.8, r * 0.8);
}

// A person as a head and shoulders, optionally with a tie.
void drawPerson(QPainter& p, QPointF head, qreal size, const QColor& colour, bool tie = false)
{
    QPainterPath body;
    const qreal top = head.y() + size * 0.62;
    body.moveTo(head.x() - size * 0.95, top + size * 1.15);
    body.cubicTo(head.x() - size * 0.95, top - size * 0.05, head.x() - size * 0.55, top,
                 head.x(), top);
    body.cubicTo(head.x() + size * 0.55, top, head.x() + size * 0.95, top - size * 0.05,
                 head.x() + size * 0.95, top + size * 1.15);
    body.closeSubpath();
    solid(p, body, shaded(body.boundingRect(), colour));
    if (tie) {
        QPainterPath t;
        t.moveTo(head.x() - size * 0.12, top + 1);
        t.lineTo(head.x() + size * 0.12, top + 1);
        t.lineTo(head.x() + size * 0.18, top + size * 0.75);
        t.lineTo(head.x(), top + size * 0.95);
        t.lineTo(head.x() - size * 0.18, top + size * 0.75);
        t.closeSubpath();
        p.setBrush(shaded(t.boundingRect(), red));
        p.setPen(inkPen(1.0));
        p.drawPath(t);
    }
    gloss(p, body, 0.3);
    const QPainterPath face = circle(head, size * 0.52);
    solid(p, face, shaded(face.boundingRect(), colour.lighter(115)));
    gloss(p, face, 0.45);
}

void drawSpeechBubble(QPainter& p, const QRectF& r, Symbol symbol)
{
    QPainterPath bubble = roundRect(r, r.height() * 0.3);
    QPainterPath tail;
    tail.moveTo(r.left() + r.width() * 0.25, r.bottom() - 2);
    tail.lineTo(r.left() + r.width() * 0.1, r.bottom() + r.height() * 0.35);
    tail.lineTo(r.left() + r.width() * 0.5, r.bottom() - 2);
    tail.closeSubpath();
    bubble = bubble.united(tail);
    solid(p, bubble, vertical(r, QColor(255, 255, 255), QColor(222, 232, 246)));
    p.setBrush(signalBlue);
    p.setPen(Qt::NoPen);
    if (symbol == Symbol::Question)
        p.drawPath(glyphs(QStringLiteral("?"), r.center(), r.height() * 0.78));
    else
        drawSymbol(p, symbol, r.center(), r.height() * 0.38);
}

void drawCalendar(QPainter& p, const QRectF& r)
{
    solid(p, roundRect(r, 3), vertical(r, paperTop, paperBottom));
    const QRectF head(r.left(), r.top(), r.width(), r.height() * 0.26);
    QPainterPath headShape;
    headShape.addRoundedRect(head, 3, 3);
    headShape.addRect(QRectF(head.left(), head.center().y(), head.width(), head.height() / 2));
    headShape = headShape.simplified();
    p.setBrush(shaded(head, red));
    p.setPen(inkPen());
    p.drawPath(headShape);
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(r, 3, 3);
    for (qreal x : {r.left() + r.width() * 0.3, r.right() - r.width() * 0.3}) {
        p.setPen(QPen(ink, 3, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(x, r.top() - 3), QPointF(x, r.top() + 4));
    }
    const int columns = 5;
    const int rows = 3;
    const QRectF cells(r.left() + 5, head.bottom() + 4, r.width() - 10, r.bottom() - head.bottom() - 8);
    const qreal cw = cells.width() / columns;
    const qreal ch = cells.height() / rows;
    for (int row = 0; row < rows; ++row) {
        for (int col = 0; col < columns; ++col) {
            const QRectF cell(cells.left() + col * cw + 1, cells.top() + row * ch + 1, cw - 2, ch - 2);
            const bool today = row == 1 && col == 3;
            p.setPen(Qt::NoPen);
            p.setBrush(today ? QColor(255, 200, 80) : QColor(190, 206, 230));
            p.drawRoundedRect(cell, 1, 1);
        }
    }
}

void drawBarChart(QPainter& p, const QRectF& r)
{
    solid(p, roundRect(r, 3), vertical(r, paperTop, paperBottom));
    const qreal base = r.bottom() - 6;
    const qreal width = r.width() * 0.18;
    const qreal heights[] = {0.3, 0.5, 0.72};
    for (int i = 0; i < 3; ++i) {
        const qreal h = (r.height() - 12) * heights[i];
        const QRectF bar(r.left() + 6 + i * (width + r.width() * 0.09), base - h, width, h);
        p.setBrush(diagonal(bar, signalBlue.lighter(140), royalBlue));
        p.setPen(inkPen(1.5));
        p.drawRect(bar);
    }
    strokeLine(p, QPointF(r.left() + 4, base), QPointF(r.right() - 4, base), ink, 1.5);
}

void drawClipboard(QPainter& p, const QRectF& r)
{
    solid(p, roundRect(r, 3.5), diagonal(r, QColor(150, 112, 70), QColor(104, 72, 40)));
    const QRectF sheet = r.adjusted(5, 8, -5, -5);
    p.setBrush(vertical(sheet, paperTop, paperBottom));
    p.setPen(inkPen(1.2));
    p.drawRect(sheet);
    for (int i = 0; i < 4; ++i) {
        const qreal y = sheet.top() + 7 + i * (sheet.height() - 10) / 4;
        QPainterPath tick;
        tick.moveTo(sheet.left() + 3, y);
        tick.lineTo(sheet.left() + 5, y + 2.2);
        tick.lineTo(sheet.left() + 9, y - 2.5);
        p.setBrush(Qt::NoBrush);
        p.setPen(QPen(i < 3 ? green : lineBlue, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        p.drawPath(tick);
        strokeLine(p, QPointF(sheet.left() + 12, y), QPointF(sheet.right() - 3, y), lineBlue, 2);
    }
    const QRectF clip(r.center().x() - r.width() * 0.2, r.top() - 3, r.width() * 0.4, 9);
    p.setBrush(vertical(clip, QColor(240, 244, 250), QColor(150, 160, 178)));
    p.setPen(inkPen(1.5));
    p.drawRoundedRect(clip, 2, 2);
}

void drawMagnifier(QPainter& p, QPointF c, qreal r)
{
    const QPointF handleStart = c + QPointF(r * 0.72, r * 0.72);
    const QPointF handleEnd = c + QPointF(r * 1.7, r * 1.7);
    p.setPen(QPen(ink, r * 0.55, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(handleStart, handleEnd);
    p.setPen(QPen(QColor(90, 60, 40), r * 0.32, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(handleStart + QPointF(r * 0.15, r * 0.15), handleEnd);
    const QPainterPath lens = circle(c, r);
    p.setBrush(QColor(200, 228, 255, 150));
    p.setPen(QPen(ink, 2.0));
    p.drawPath(lens);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(190, 198, 212), 1.6));
    p.drawEllipse(c, r - 1.6, r - 1.6);
    gloss(p, lens, 0.6);
}

// A thick curved arrow from one point to another.
void drawCurvedArrow(QPainter& p, QPointF from, QPointF control, QPointF to, const QColor& colour)
{
    QPainterPath shaft;
    shaft.moveTo(from);
    shaft.quadTo(control, to);
    const qreal angle = qAtan2(to.y() - control.y(), to.x() - control.x());
    QPainterPath head;
    const qreal len = 9;
    head.moveTo(to + QPointF(qCos(angle) * 3, qSin(angle) * 3));
    head.lineTo(to + QPointF(qCos(angle + 2.5) * len, qSin(angle + 2.5) * len));
    head.lineTo(to + QPointF(qCos(angle - 2.5) * len, qSin(angle - 2.5) * len));
    head.closeSubpath();
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(ink, 7.5, Qt::SolidLine, Qt::RoundCap));
    p.drawPath(shaft);
    p.setBrush(ink);
    p.setPen(inkPen(3));
    p.drawPath(head);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(colour, 4.5, Qt::SolidLine, Qt::RoundCap));
    p.drawPath(shaft);
    p.setBrush(colour);
    p.setPen(Qt::NoPen);
    p.drawPath(head);
}

// --- Icons (64 x 64 grid) ---------------------------------------------------------

const QRectF documentBox(10, 5, 36, 48);
const QPointF badgeCentre(46.5, 46.5);
constexpr qreal badgeRadius = 13.5;

void paintNormal(QPainter& p)
{
    drawPage(p, documentBox);
    drawBadge(p, badgeCentre, badgeRadius, gold, Symbol::Euro);
}

void paintVorweg(QPainter& p)
{
    drawPage(p, documentBox, PageContent::Chart);
    drawBadge(p, badgeCentre, badgeRadius, blue, Symbol::ArrowRight);
}

void paintErmaess(QPainter& p)
{
    drawPage(p, documentBox);
    drawBadge(p, badgeCentre, badgeRadius, green, Symbol::Percent);
}

void paintEinur(QPainter& p)
{
    drawBarChart(p, QRectF(6, 8, 44, 40));
    drawBadge(p, badgeCentre, badgeRadius, green, Symbol::ArrowUp);
}

void paintEinurVor(QPainter& p)
{
    drawCalendar(p, QRectF(6, 9, 44, 40));
    drawBadge(p, badgeCentre, badgeRadius, gold, Symbol::Euro);
}

void paintFest(QPainter& p)
{
    drawPage(p, QRectF(6, 4, 34, 44));
    drawPerson(p, QPointF(36, 30), 10, green.darker(110));
    drawPerson(p, QPointF(48, 36), 10, blue);
    drawBadge(p, QPointF(16, 48), 10, slate, Symbol::Paragraph);
}

void paintNewFile(QPainter& p)
{
    drawPage(p, documentBox);
    drawBadge(p, badgeCentre, badgeRadius, green, Symbol::Plus);
}

void paintOpenFile(QPainter& p)
{
    drawFolder(p, QRectF(5, 14, 50, 40), false);
    p.save();
    p.translate(30, 30);
    p.rotate(8);
    drawPage(p, QRectF(-14, -24, 28, 34), PageContent::Lines);
    p.restore();
    drawFolder(p, QRectF(5, 14, 50, 40), true);
}

void paintTakeOver(QPainter& p)
{
    drawPage(p, QRectF(4, 14, 28, 37), PageContent::Lines, QColor(205, 208, 214));
    drawPage(p, QRectF(30, 22, 28, 37), PageContent::Lines);
    drawCurvedArrow(p, QPointF(14, 12), QPointF(30, -4), QPointF(44, 14), gold);
}

void paintHome(QPainter& p)
{
    drawHouse(p, QRectF(6, 6, 52, 52));
}

void paintMoreFiles(QPainter& p)
{
    p.save();
    p.translate(32, 34);
    p.rotate(-10);
    drawPage(p, QRectF(-24, -26, 32, 42), PageContent::Plain);
    p.rotate(10);
    drawPage(p, QRectF(-18, -27, 32, 42), PageContent::Plain);
    p.rotate(8);
    drawPage(p, QRectF(-10, -24, 32, 42));
    p.restore();
}

void paintOverview(QPainter& p)
{
    drawPage(p, QRectF(6, 4, 40, 52), PageContent::Table);
    drawMagnifier(p, QPointF(40, 38), 10);
}

void paintBeraterPlus(QPainter& p)
{
    drawPerson(p, QPointF(26, 22), 14, blue, true);
    drawSpeechBubble(p, QRectF(36, 4, 24, 18), Symbol::Question);
}

void paintOnlineBerater(QPainter& p)
{
    drawGlobe(p, QPointF(28, 34), 22);
    drawSpeechBubble(p, QRectF(36, 4, 24, 18), Symbol::Question);
}

void paintKompass(QPainter& p)
{
    drawCompass(p, QPointF(32, 32), 26);
}

void paintHandbuch(QPainter& p)
{
    drawBook(p, QRectF(10, 5, 44, 54));
}

void paintSupport(QPainter& p)
{
    drawLifebuoy(p, QPointF(32, 32), 26);
}

void paintOnline(QPainter& p)
{
    drawGlobe(p, QPointF(28, 28), 23);
    drawBadge(p, badgeCentre, badgeRadius, green, Symbol::Refresh);
}

void paintOptionen(QPainter& p)
{
    drawGear(p, QPointF(32, 32), 27, 9);
}

void paintReport(QPainter& p)
{
    drawClipboard(p, QRectF(12, 7, 40, 52));
}

void paintNetViewer(QPainter& p)
{
    drawMonitor(p, QRectF(4, 8, 56, 50));
    drawCurvedArrow(p, QPointF(15, 28), QPointF(32, 14), QPointF(47, 24), gold);
    drawCurvedArrow(p, QPointF(47, 35), QPointF(32, 47), QPointF(17, 37), QColor(255, 255, 255));
}

void paintFolder(QPainter& p)
{
    drawFolder(p, QRectF(5, 10, 54, 44), false);
}

void paintCd(QPainter& p)
{
    drawDisc(p, QPointF(32, 32), 27);
}

void paintMenuOnline(QPainter& p)
{
    drawGlobe(p, QPointF(28, 28), 23);
    drawBadge(p, badgeCentre, badgeRadius, green, Symbol::ArrowDown);
}

void paintOnlineConfig(QPainter& p)
{
    drawGlobe(p, QPointF(27, 27), 22);
    drawGear(p, QPointF(46, 46), 15, 8);
}

// The application icon for the desktop: the mode icon of the income-tax
// return on a tile in the company's blue.
void paintAppIcon(QPainter& p)
{
    const QRectF tileBox(3, 3, 58, 58);
    const QPainterPath tile = roundRect(tileBox, 13);
    dropShadow(p, tile);
    p.setBrush(diagonal(tileBox, QColor(98, 152, 235), royalBlue));
    p.setPen(inkPen(1.5));
    p.drawPath(tile);
    gloss(p, tile, 0.35);
    drawPage(p, QRectF(15, 10, 28, 38));
    drawBadge(p, QPointF(44, 44), 11.5, gold, Symbol::Euro);
}

// --- Header and divider -------------------------------------------------------------

constexpr qreal headerWidth = 740;
constexpr qreal headerHeight = 82;

QFont headerFont(qreal pixelSize, bool bold)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(qRound(pixelSize));
    font.setBold(bold);
    return font;
}

// The company mark: a rounded square with a ring and a tick.
void drawMark(QPainter& p, const QRectF& r)
{
    const QPainterPath tile = roundRect(r, r.width() * 0.22);
    p.setBrush(diagonal(r, QColor(98, 152, 235), royalBlue));
    p.setPen(QPen(QColor(255, 255, 255, 160), 1.5));
    p.drawPath(tile);
    gloss(p, tile, 0.35);
    const QPointF c = r.center();
    const qreal radius = r.width() * 0.28;
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(Qt::white, r.width() * 0.1, Qt::SolidLine, Qt::RoundCap));
    p.drawArc(QRectF(c - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius)), 60 * 16, 290 * 16);
    QPainterPath tick;
    tick.moveTo(c + QPointF(-radius * 0.35, radius * 0.05));
    tick.lineTo(c + QPointF(radius * 0.05, radius * 0.45));
    tick.lineTo(c + QPointF(radius * 1.05, -radius * 0.85));
    p.setPen(QPen(QColor(255, 200, 80), r.width() * 0.11, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawPath(tick);
}

void paintHeader(QPainter& p)
{
    const QRectF all(0, 0, headerWidth, headerHeight);
    QLinearGradient sky(all.topLeft(), all.topRight());
    sky.setColorAt(0.0, designBlue);
    sky.setColorAt(0.55, QColor(10, 48, 112));
    sky.setColorAt(1.0, QColor(26, 76, 150));
    p.fillRect(all, sky);

    // Soft rings and a rising line on the right: the calm motif of the suite.
    p.setBrush(Qt::NoBrush);
    for (int i = 0; i < 6; ++i) {
        p.setPen(QPen(QColor(255, 255, 255, 16 + 3 * i), 1.2));
        const qreal r = 60 + i * 26;
        p.drawEllipse(QPointF(650, 120), r, r);
    }
    QPainterPath trend;
    const QPointF points[] = {{440, 70}, {492, 62}, {540, 66}, {590, 48}, {640, 52}, {690, 30}, {740, 22}};
    trend.moveTo(points[0]);
    for (const QPointF& pt : points)
        trend.lineTo(pt);
    p.setPen(QPen(QColor(255, 255, 255, 60), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawPath(trend);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 200, 80, 150));
    for (const QPointF& pt : points)
        p.drawEllipse(pt, 2.4, 2.4);

    // Gloss over the upper half.
    QLinearGradient shine(all.topLeft(), QPointF(0, headerHeight * 0.5));
    shine.setColorAt(0.0, QColor(255, 255, 255, 38));
    shine.setColorAt(1.0, QColor(255, 255, 255, 0));
    p.fillRect(QRectF(0, 0, headerWidth, headerHeight * 0.5), shine);

    drawMark(p, QRectF(18, 14, 54, 54));

    p.setPen(Qt::white);
    p.setFont(headerFont(27, true));
    p.drawText(QPointF(88, 44), QStringLiteral("Orvane-Erkl\u00E4rung 2012"));
    p.setPen(QColor(176, 206, 248));
    p.setFont(headerFont(13, false));
    p.drawText(QPointF(90, 65), QStringLiteral("Start-Center  \u00B7  Steuerjahr 2011"));

    p.setPen(QColor(255, 255, 255, 190));
    QFont maker = headerFont(12, true);
    maker.setLetterSpacing(QFont::AbsoluteSpacing, 2.5);
    p.setFont(maker);
    p.drawText(QRectF(0, 0, headerWidth - 18, headerHeight - 10), Qt::AlignRight | Qt::AlignBottom,
               QStringLiteral("MARVENDO"));

    // A thin gold rule along the bottom edge.
    QLinearGradient rule(all.bottomLeft(), all.bottomRight());
    rule.setColorAt(0.0, QColor(255, 200, 80, 0));
    rule.setColorAt(0.3, QColor(255, 200, 80, 220));
    rule.setColorAt(1.0, QColor(255, 200, 80, 60));
    p.fillRect(QRectF(0, headerHeight - 2.5, headerWidth, 2.5), rule);
}

// The header kept in the container: a plain, light variant. The installation
// ships the designed header as a loose file, which takes its place.
void paintPlainHeader(QPainter& p)
{
    const QRectF all(0, 0, headerWidth, headerHeight);
    p.fillRect(all, vertical(all, QColor(250, 251, 253), QColor(216, 224, 236)));
    p.fillRect(QRectF(0, headerHeight - 3, headerWidth, 3), designBlue);
    drawMark(p, QRectF(22, 18, 46, 46));
    p.setPen(designBlue);
    p.setFont(headerFont(24, true));
    p.drawText(QPointF(84, 48), QStringLiteral("Orvane-Erkl\u00E4rung"));
    p.setPen(slate);
    p.setFont(headerFont(13, false));
    p.drawText(QRectF(0, 0, headerWidth - 20, headerHeight - 3), Qt::AlignRight | Qt::AlignVCenter,
               QStringLiteral("Start-Center"));
}

void paintDivider(QPainter& p)
{
    const QRectF all(0, 0, 400, 2);
    QLinearGradient dark(all.topLeft(), all.topRight());
    dark.setColorAt(0.0, QColor(120, 140, 170, 0));
    dark.setColorAt(0.5, QColor(120, 140, 170, 200));
    dark.setColorAt(1.0, QColor(120, 140, 170, 0));
    p.fillRect(QRectF(0, 0, 400, 1), dark);
    QLinearGradient light(all.topLeft(), all.topRight());
    light.setColorAt(0.0, QColor(255, 255, 255, 0));
    light.setColorAt(0.5, QColor(255, 255, 255, 230));
    light.setColorAt(1.0, QColor(255, 255, 255, 0));
    p.fillRect(QRectF(0, 1, 400, 1), light);
}

// --- The picture table ---------------------------------------------------------------

enum class Place { Container, Loose, IconTheme };

struct Picture
{
    const char* name;
    QSizeF logicalSize;
    qreal scale;   // output pixels per logical unit
    std::function<void(QPainter&)> paint;
    Place place = Place::Container;

    QSize pixelSize() const { return (logicalSize * scale).toSize(); }
};

std::vector<Picture> pictures()
{
    const QSizeF icon(grid, grid);
    constexpr qreal large = 1.0;     // 64 x 64: mode buttons and page actions
    constexpr qreal toolbar = 0.75;  // 48 x 48: tool bar and menus
    const QSizeF header(headerWidth, headerHeight);
    return {
        // At the size the launcher shows on large screens: decoding a larger
        // picture costs every start a few milliseconds.
        {"sc_header", header, 960.0 / headerWidth, paintHeader, Place::Loose},
        {"sc_header", header, 960.0 / headerWidth, paintPlainHeader},
        {"sc_divider", QSizeF(400, 2), 1.0, paintDivider},

        {"normal", icon, large, paintNormal},
        {"vorweg", icon, large, paintVorweg},
        {"ermaess", icon, large, paintErmaess},
        {"einur", icon, large, paintEinur},
        {"einurvor", icon, large, paintEinurVor},
        {"fest", icon, large, paintFest},

        {"sc_berater-small", icon, toolbar, paintBeraterPlus},
        {"onlineberater_blau-small", icon, toolbar, paintOnlineBerater},
        {"kompass-small", icon, toolbar, paintKompass},
        {"handbuch", icon, toolbar, paintHandbuch},
        {"support", icon, toolbar, paintSupport},
        {"online-small", icon, toolbar, paintOnline},
        {"optionen", icon, toolbar, paintOptionen},
        {"menu_report", icon, toolbar, paintReport},
        {"netviewer-small", icon, toolbar, paintNetViewer},
        {"folder-closed-small", icon, toolbar, paintFolder},
        {"cd", icon, toolbar, paintCd},
        {"menu_online", icon, toolbar, paintMenuOnline},
        {"online_konfig", icon, toolbar, paintOnlineConfig},

        {"sc_new", icon, large, paintNewFile},
        {"neu-small", icon, large, paintNewFile},
        {"sc_open", icon, large, paintOpenFile},
        {"oeffnen-small", icon, large, paintOpenFile},
        {"InspDatenuebernahme", icon, large, paintTakeOver},
        {"hilfe_Datenuebernahme", icon, large, paintTakeOver},
        {"tool_home-small", icon, large, paintHome},
        {"home", icon, large, paintHome},
        {"sc_weitere", icon, large, paintMoreFiles},
        {"sc_overview", icon, large, paintOverview},

    };
}

// The application icon at each size desktops ask an icon theme for.
std::vector<Picture> appIcons()
{
    std::vector<Picture> icons;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
        icons.push_back({"de.marvendo.startcenter", QSizeF(grid, grid), size / grid, paintAppIcon, Place::IconTheme});
    return icons;
}

// The folder a picture belongs in; empty when that folder was not asked for.
QString outputFolder(const Picture& picture, const QStringList& args)
{
    switch (picture.place) {
    case Place::Container:
        return args.at(1);
    case Place::Loose:
        return args.at(2);
    case Place::IconTheme:
        if (args.size() < 4)
            return {};
        return QStringLiteral("%1/%2x%3/apps")
            .arg(args.at(3))
            .arg(picture.pixelSize().width())
            .arg(picture.pixelSize().height());
    }
    return {};
}

bool render(const Picture& picture, const QDir& folder)
{
    if (!QDir().mkpath(folder.path())) {
        std::fprintf(stderr, "demoart: cannot create %s\n", qPrintable(folder.path()));
        return false;
    }
    QImage image(picture.pixelSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter p(&image);
        p.setRenderHint(QPainter::Antialiasing);
        p.setRenderHint(QPainter::TextAntialiasing);
        p.scale(picture.scale, picture.scale);
        picture.paint(p);
    }
    const QString path = folder.filePath(QString::fromLatin1(picture.name) + QStringLiteral(".png"));
    if (!image.save(path, "PNG")) {
        std::fprintf(stderr, "demoart: cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    // Fonts need a GUI application; no display is needed for painting into images.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 3 && args.size() != 4) {
        std::fprintf(stderr, "usage: demoart <container folder> <loose folder> [<icon theme folder>]\n");
        return 2;
    }
    bool ok = true;
    std::vector<Picture> all = pictures();
    for (Picture& icon : appIcons())
        all.push_back(std::move(icon));
    for (const Picture& picture : all) {
        const QString folder = outputFolder(picture, args);
        if (!folder.isEmpty())
            ok = render(picture, QDir(folder)) && ok;
    }
    return ok ? 0 : 1;
}
