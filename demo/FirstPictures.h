// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

class PictureFolder;

/// The usual port of a node, so that the pictures show what most people see; another one where it is taken, 0 if none
/// is free.
quint16 portForPictures();

/// Of the first contact: without a node, at a node without pins, and with the first file added.
void takeFirstPictures(const PictureFolder& folder);
