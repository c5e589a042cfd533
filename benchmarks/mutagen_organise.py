"""Copies every audio file below one folder into a folder named by its artist in another one."""

import os
import shutil
import sys

import mutagen

source, target = sys.argv[1:]
for folder, _, names in os.walk(source):
    for name in names:
        path = os.path.join(folder, name)
        tags = mutagen.File(path, easy=True)
        artist = str((tags or {}).get("artist", ["Unknown"])[0])
        goal = os.path.join(target, artist.replace("/", " "))
        os.makedirs(goal, exist_ok=True)
        shutil.copy2(path, os.path.join(goal, name))
