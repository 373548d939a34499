#pragma once

// The factor by which the launcher scales its fonts, so that the fixed layout
// looks the same under different font rendering: users divide a point size by
// getFontScale().
class FontHelper
{
public:
    // Measures the reference text; needs the GUI application to exist.
    FontHelper();

    float getFontScale() const;

    // The scale for a measured width of the reference text in pixels. Narrow
    // measurements (a missing font, tiny rendering) get the scale of a known
    // reference system instead of a tiny factor.
    static float scaleForWidth(float width);

private:
    float m_fontScale;
};
