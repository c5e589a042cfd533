#pragma once

/// The share of @p done in @p total (more than 0) in whole percent, truncated; in single precision.
inline int Percentage(int done, int total)
{
    return static_cast<int>(static_cast<float>(done) / static_cast<float>(total) * 100.0F);
}
