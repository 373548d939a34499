#pragma once

// The factor by which the launcher scales its fonts, so that the fixed layout
// looks the same under different font rendering: users divide a point size by
// getFontScale().

class QString;

class FontHelper
{
public:
    // Measures the reference text in the reference family; needs the GUI
    // application to exist.
    FontHelper();

    float getFontScale() const;

    // The scale for a measured width of the reference text in pixels. Narrow
    // measurements (a missing font, tiny rendering) get the scale of a known
    // reference system instead of a tiny factor.
    static float scaleForWidth(float width);
    // The scale measured in family. A family that is not installed gives 1.0:
    // the system's fonts are then used as they are, rather than scaled by
    // whatever substitute the font configuration would pick for it.
    static float scaleForFamily(const QString& family);

private:
    float m_fontScale;
};
