#!/usr/bin/python3
"""Draws the product pictures listed in drawings.txt into this folder.

Needs Debian's python3-pil, fonts-noto-color-emoji, fonts-dejavu-core and
fonts-nanum. Run it after a change to drawings.txt; the build takes the pictures
as they are.
"""
import colorsys
import pathlib
import zlib

from PIL import Image, ImageDraw, ImageFont

HERE = pathlib.Path(__file__).resolve().parent
SIDE = 192
# The font's bitmaps exist in this size only.
EMOJI_FONT = ImageFont.truetype("/usr/share/fonts/truetype/noto/NotoColorEmoji.ttf", 109)
LABEL_FONT = ImageFont.truetype("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf", 19)
KOREAN_LABEL_FONT = ImageFont.truetype("/usr/share/fonts/truetype/nanum/NanumGothicBold.ttf", 20)


def colour(hue, lightness, saturation):
    return tuple(round(255 * part) for part in colorsys.hls_to_rgb(hue, lightness, saturation))


def backdrop(hue):
    """A soft disc of light on a pale ground."""
    picture = Image.new("RGB", (SIDE, SIDE), colour(hue, 0.86, 0.45))
    ImageDraw.Draw(picture).ellipse((14, 2, SIDE - 14, SIDE - 26), fill=colour(hue, 0.94, 0.6))
    return picture


def emoji(text):
    glyph = Image.new("RGBA", (160, 160))
    ImageDraw.Draw(glyph).text((80, 80), text, font=EMOJI_FONT, embedded_color=True, anchor="mm")
    return glyph.crop(glyph.getbbox())


def write_label(picture, text, hue):
    draw = ImageDraw.Draw(picture)
    font = KOREAN_LABEL_FONT if "가" <= text[0] <= "힣" else LABEL_FONT
    width = draw.textlength(text, font=font)
    middle, top, bottom = SIDE / 2, SIDE - 36, SIDE - 8
    box = (middle - width / 2 - 12, top, middle + width / 2 + 12, bottom)
    draw.rounded_rectangle(box, radius=14, fill=colour(hue, 0.34, 0.5))
    draw.text((middle, (top + bottom) / 2), text, font=font, fill="white", anchor="mm")


def draw_picture(name, symbol, label):
    hue = zlib.crc32(name.encode()) % 360 / 360
    picture = backdrop(hue)
    glyph = emoji(symbol)
    picture.paste(glyph, ((SIDE - glyph.width) // 2, (SIDE - 32 - glyph.height) // 2), glyph)
    write_label(picture, label, hue)
    return picture


def save(picture, path):
    if path.suffix == ".jpg":
        picture.save(path, quality=84, optimize=True)
    else:
        palette = picture.quantize(128, dither=Image.Dither.NONE)
        palette.save(path, optimize=True)


def main():
    for line in (HERE / "drawings.txt").read_text(encoding="utf-8").splitlines():
        if not line.startswith("#"):
            name, symbol, label = (part.strip() for part in line.split("|"))
            save(draw_picture(name, symbol, label), HERE / name)


main()
