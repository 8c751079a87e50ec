#!/usr/bin/env python3
"""Writes VAST 2 and 3 documents of the kinds that ad servers send, from 1 to 50 kB, and large ones for linearity.

usage: documents.py FOLDER        the same documents every time
"""

import pathlib
import random
import sys

COUNT = 200
EVENTS = ["start", "creativeView", "firstQuartile", "midpoint", "thirdQuartile", "complete", "pause", "resume", "mute",
          "unmute", "fullscreen", "rewind"]
SIZES = [(320, 180, 300), (640, 360, 800), (960, 540, 1500), (1280, 720, 2500), (1920, 1080, 5000)]
TYPES = ["video/mp4", "video/mp4", "video/webm", "video/x-flv", "application/x-mpegURL"]


class Writer:
    """One server's style: pretty-printed or not, CDATA or escaped text."""

    def __init__(self, chance):
        self.chance = chance
        self.pretty = chance.random() < 0.6
        self.cdata = chance.random() < 0.7

    def url(self, kind):
        query = "&".join(f"{name}={self.chance.randrange(10 ** 9)}" for name in ("ord", "cid", "pid", "x")[:self.chance.randint(1, 4)])
        url = f"https://track{self.chance.randrange(9)}.ads.example/{kind}/{self.chance.randrange(10 ** 6)}?{query}"
        if self.cdata:
            return f"<![CDATA[{url}]]>"
        return url.replace("&", "&amp;")

    def element(self, depth, name, content, **attributes):
        text = "".join(f' {key}="{value}"' for key, value in attributes.items())
        start = ("\n" + "  " * depth if self.pretty else "") + f"<{name}{text}>"
        end = ("\n" + "  " * depth if self.pretty and content.startswith("\n") else "") + f"</{name}>"
        return start + content + end

    def linear(self, depth, trackings, files):
        parts = ""
        if files:
            parts += self.element(depth + 1, "Duration", "00:00:30")
        parts += self.element(depth + 1, "TrackingEvents", "".join(
            self.element(depth + 2, "Tracking", self.url("event"), event=self.chance.choice(EVENTS)) for _ in range(trackings)))
        parts += self.element(depth + 1, "VideoClicks", self.element(depth + 2, "ClickThrough", self.url("click")))
        if files:
            parts += self.element(depth + 1, "MediaFiles", "".join(self.file(depth + 2) for _ in range(files)))
        return self.element(depth - 1, "Creatives", self.element(
            depth, "Creative", self.element(depth, "Linear", parts), AdID=str(self.chance.randrange(10 ** 6))))

    def file(self, depth):
        width, height, bitrate = self.chance.choice(SIZES)
        return self.element(depth, "MediaFile", self.url("media"), id=str(self.chance.randrange(10 ** 6)),
                            delivery="progressive", type=self.chance.choice(TYPES), bitrate=bitrate, width=width,
                            height=height, scalable="true", maintainAspectRatio="true")

    def ad(self, trackings, files, **attributes):
        kind = "InLine" if files else "Wrapper"
        parts = self.element(3, "AdSystem", "Example Ad Server", version="4.1")
        if files:
            parts += self.element(3, "AdTitle", "Harbour at dawn") + self.element(3, "Description", "A day at the quay")
        else:
            parts += self.element(3, "VASTAdTagURI", self.url("tag"))
        for name in ("Error", "Impression"):
            parts += "".join(self.element(3, name, self.url(name.lower())) for _ in range(self.chance.randint(1, 3)))
        parts += self.linear(4, trackings, files)
        if self.chance.random() < 0.4:
            parts += self.element(3, "Extensions", self.element(4, "Extension", self.element(
                5, "CustomTracking", self.element(6, "Tracking", self.url("custom"), event="skip")), type="waterfall"))
        return self.element(1, "Ad", self.element(2, kind, parts), **attributes)

    def document(self, ads, version):
        head = '<?xml version="1.0" encoding="UTF-8"?>\n'
        return head + f'<VAST version="{version}">' + ads + "\n</VAST>\n"


def one(chance):
    """A document whose size is drawn evenly on a logarithmic scale."""
    writer = Writer(chance)
    wanted = 1024 * 50 ** chance.random()
    version = chance.choice(["2.0", "3.0"])
    ads = ""
    number = 0
    while len(ads) < wanted:
        number += 1
        left = wanted - len(ads)
        trackings = min(chance.randint(2, 40), max(1, int(left / 250)))
        files = 0 if chance.random() < 0.25 else min(chance.randint(1, 8), max(1, int(left / 600)))
        attributes = {"id": str(chance.randrange(10 ** 9))}
        if version == "3.0" and chance.random() < 0.7:
            attributes["sequence"] = str(number)
        ads += writer.ad(trackings, files, **attributes)
        if left < 1500 or chance.random() < 0.3 and len(ads) > wanted / 2:
            break
    return writer.document(ads, version)


def large(ads, trackings):
    """Pods of `ads` ads with `trackings` tracking URLs each."""
    writer = Writer(random.Random(7))
    return writer.document("".join(writer.ad(trackings, 2, id=str(i), sequence=str(i)) for i in range(ads)), "3.0")


def main():
    folder = pathlib.Path(sys.argv[1])
    (folder / "varied").mkdir(parents=True, exist_ok=True)
    (folder / "large").mkdir(exist_ok=True)
    chance = random.Random(1)
    sizes = []
    for number in range(COUNT):
        text = one(chance)
        sizes.append(len(text))
        (folder / "varied" / f"{number:03}.xml").write_text(text)
    for thousands in (1, 10):
        (folder / "large" / f"ads-{thousands}000.xml").write_text(large(thousands * 1000, 3))
    for thousands in (10, 100):
        (folder / "large" / f"trackings-{thousands}000.xml").write_text(large(10, thousands * 100))
    print(f"{COUNT} documents of {min(sizes)} to {max(sizes)} bytes, {sum(sizes) / COUNT:.0f} on average", file=sys.stderr)


main()
