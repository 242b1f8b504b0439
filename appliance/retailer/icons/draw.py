#!/usr/bin/python3
"""Draws the badge icons listed in BADGES into this folder, as CODE.png.

Needs Debian's python3-pil and fonts-nanum. Run it after a change; the build takes
the icons as they are.
"""
import pathlib

from PIL import Image, ImageDraw, ImageFont

HERE = pathlib.Path(__file__).resolve().parent
WIDTH, HEIGHT = 72, 36
# Drawn larger and scaled down, for smooth edges.
SCALE = 4
FONT = ImageFont.truetype("/usr/share/fonts/truetype/nanum/NanumGothicBold.ttf", 18 * SCALE)

BADGES = {
    90: ("1+1", "#D6322D"),
    91: ("2+1", "#E2681C"),
    100: ("오늘", "#1E7A3C"),
    110: ("카드", "#2456A6"),
    120: ("쿠폰", "#8A2F8F"),
    130: ("적립", "#A8741A"),
    270: ("신선", "#0F7C86"),
}


def draw_badge(text, colour):
    badge = Image.new("RGBA", (WIDTH * SCALE, HEIGHT * SCALE))
    draw = ImageDraw.Draw(badge)
    draw.rounded_rectangle((0, 0, badge.width - 1, badge.height - 1), radius=10 * SCALE, fill=colour)
    draw.text((badge.width / 2, badge.height / 2), text, font=FONT, fill="white", anchor="mm")
    return badge.resize((WIDTH, HEIGHT), Image.Resampling.LANCZOS)


for code, (label, ground) in BADGES.items():
    draw_badge(label, ground).save(HERE / f"{code}.png", optimize=True)
