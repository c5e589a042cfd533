#pragma once

class QWidget;

/// Draws each caption of @p window smaller that a user's large font would cut off because the form has fixed its size
/// or that of the whole window.
void FitCaptions(const QWidget& window);
