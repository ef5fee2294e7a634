// SPDX-License-Identifier: MIT
#pragma once

#include <QSize>
#include <QString>

class QDialog;

/// One sizing policy for every dialog. On its first show a dialog restores the geometry that its last close saved,
/// inside the screen, or fits itself to its content within a share of the screen; it goes on fitting until its user
/// resizes it.
namespace DialogSizing {

struct Options
{
    QString settingsKey {};       ///< group in the settings store; blank means "Dialogs/" and the class name
    QSize minimumSize {};         ///< hard minimum in pixels, set on the dialog as well; invalid for none
    QSize preferredSize {};       ///< floor for the fitted size in pixels; invalid for none
    double maxWidthRatio = 0.9;   ///< largest share of the screen's available width, bounded to 0.2 … 1.0
    double maxHeightRatio = 0.85; ///< as above, of the height
    bool useSizeHint = true;      ///< start from the dialog's size hint
    bool persistGeometry = true;  ///< save on close, restore on the first show
};

/// Every dialog calls it once, in its constructor. A second call for the same dialog does nothing.
void attach(QDialog* dialog, const Options& options);

/// To be called after a change of content that changes what the dialog wants to measure. Does nothing once the dialog
/// has been resized by its user or restored, nor for a dialog that is not attached.
void requestRefit(QDialog* dialog);

} // namespace DialogSizing
