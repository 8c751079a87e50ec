#!/usr/bin/env python3
"""Prints what the two profiles make of the documents of a folder, as a table in Markdown.

usage: profiles.py YMRVAST FOLDER
"""

import json
import pathlib
import subprocess
import sys

ymrvast, folder = sys.argv[1:3]


def inspected(path, profile):
    command = [ymrvast, "--json", "--log", "none", "--profile", profile, str(path)]
    return json.loads(subprocess.run(command, stdout=subprocess.PIPE, text=True, check=False).stdout)


def shown(path, profile):
    films = [ad["picked"].rsplit("/", 1)[1] for ad in inspected(path, profile)["ads"] if ad["picked"]]
    return ", ".join(films) or "nothing"


def why(path):
    reasons = {ad["other"]["why"] for ad in inspected(path, "broad")["ads"]} - {None}
    return "; ".join(sorted(reasons))


print("| document | exact | broad | why |\n|---|---|---|---|")
counts = {"exact": 0, "broad": 0}
paths = sorted(pathlib.Path(folder).glob("*.xml"))
for path in paths:
    films = {profile: shown(path, profile) for profile in counts}
    for profile, film in films.items():
        counts[profile] += film != "nothing"
    print(f"| {path.stem} | {films['exact']} | {films['broad']} | {why(path)} |")
print(f"\nOf {len(paths)} documents exact shows {counts['exact']}, broad {counts['broad']}.")
