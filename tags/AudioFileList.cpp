#include "tags/AudioFileList.h"

void AudioFileList::Append(const SAudioFile& file)
{
    rowOfPath.insert(file.Path, Count());
    records.append(file);
}

void AudioFileList::Remove(int row)
{
    if (!IsRow(row))
        return;
    rowOfPath.remove(records.takeAt(row).Path);
    for (int moved = row; moved < records.size(); ++moved)
        rowOfPath[records.at(moved).Path] = moved;
}

void AudioFileList::Clear()
{
    records.clear();
    rowOfPath.clear();
}
