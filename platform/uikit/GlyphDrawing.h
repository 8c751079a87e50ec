#pragma once

#include <QBrush>
#include <QGlyphRun>
#include <QPen>

class QPainter;

// Fills glyphs and strokes their outlines; either may be none. Letters that are outlined or large are drawn once and
// their pictures repeated, at a quarter of a pixel: a line of them as one path would take time quadratic in its length.
// The glyphs' own underlines are left out. Main thread.
void drawGlyphs(QPainter& painter, const QGlyphRun& glyphs, const QPointF& origin, const QBrush& filling,
                const QPen& outline);
