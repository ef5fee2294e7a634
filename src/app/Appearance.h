// SPDX-License-Identifier: MIT
#pragma once

class QIcon;
class QPalette;

/// macOS: switches off automatic window tabbing. Elsewhere it does nothing. Call it before the application is
/// constructed.
void disableWindowTabbing();

/// The application's palette. Its tool tip colours are white on white; tool tips are shown in toolTipPalette.
QPalette darkPalette();
QPalette toolTipPalette();

/// Fusion style and the palettes; where the style is missing all stay the platform's.
void applyFusionLook();

/// "»" in the palette's text colour, for a tool bar whose end does not fit; the style's own sign is dark on dark.
QIcon overflowIcon(const QPalette& palette);
