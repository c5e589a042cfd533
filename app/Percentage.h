#pragma once

/// The share of @p done in @p total (more than 0) in whole percent, truncated. Single precision is enough for a bar:
/// now and then the result is one too low, as for 53 of 100.
inline int Percentage(int done, int total)
{
    return static_cast<int>(static_cast<float>(done) / static_cast<float>(total) * 100.0F);
}
