#pragma once

class QIcon;
class QPalette;

/// macOS: switches off automatic window tabbing. Elsewhere it does nothing. Call it before the application is made.
void disableWindowTabbing();

/// The program's one palette.
QPalette darkPalette();

/// Fusion style and dark palette; where the style is missing both stay the platform's.
void applyFusionLook();

/// "»" in the palette's text colour, for a tool bar whose end does not fit; the style's own sign is dark on dark.
QIcon overflowIcon(const QPalette& palette);
