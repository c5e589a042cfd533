#pragma once

class QWidget;

/// Where a user's large font would be cut off because a form has fixed the size of a caption or of the whole window,
/// draws that caption smaller, and its neighbours with it so that they stay alike.
void FitCaptions(const QWidget& window);
