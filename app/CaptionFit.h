#pragma once

class QWidget;

/// Shrinks each caption that a large user font would cut off, because the form fixes the caption's size or that of the
/// whole window. The captions of a group box keep one size.
void FitCaptions(const QWidget& window);
