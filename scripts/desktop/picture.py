"""A picture of the screen or of a window."""

import struct
import zlib
from dataclasses import dataclass
from pathlib import Path


@dataclass(frozen=True)
class Picture:
    width: int
    height: int
    pixels: bytes  # 4 bytes each: blue, green, red and one unused

    def color(self, x, y):
        """(red, green, blue) of one pixel."""
        at = (y * self.width + x) * 4
        blue, green, red = self.pixels[at:at + 3]
        return red, green, blue

    def colors(self):
        """The number of different colours, at most about 4000 pixels looked at."""
        count = self.width * self.height
        step = max(1, count // 4000) | 1
        return len({self.pixels[at:at + 3] for at in range(0, count * 4, step * 4)})

    def differing_pixels(self, other):
        """How many pixels differ; all of them for a picture of another size."""
        if (self.width, self.height) != (other.width, other.height):
            return max(self.width * self.height, other.width * other.height)
        if self.pixels == other.pixels:
            return 0
        difference = int.from_bytes(self.pixels, "little") ^ int.from_bytes(other.pixels, "little")
        changed = difference.to_bytes(len(self.pixels), "little")
        words = struct.unpack(f"<{self.width * self.height}I", changed)
        return sum(1 for word in words if word & 0xFFFFFF)

    def cropped(self, x, y, width, height):
        rows = (self.pixels[(row * self.width + x) * 4:(row * self.width + x + width) * 4]
                for row in range(y, y + height))
        return Picture(width, height, b"".join(rows))

    def save(self, path):
        """Writes a PNG."""
        rgb = bytearray(self.width * self.height * 3)
        rgb[0::3] = self.pixels[2::4]
        rgb[1::3] = self.pixels[1::4]
        rgb[2::3] = self.pixels[0::4]
        stride = self.width * 3
        rows = b"".join(b"\0" + rgb[row * stride:(row + 1) * stride] for row in range(self.height))

        def chunk(kind, data):
            return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 2, 0, 0, 0)
        path = Path(path)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 9)) +
                         chunk(b"IEND", b""))
        return path
