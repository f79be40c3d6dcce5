#!/usr/bin/python3
"""How long a window takes to paint what was covered: redraws.py DISPLAY X Y

Puts a small window of its own over that point of the screen and takes it away, again and again until standard input
ends. Each time it prints the seconds from then until the point has lost the small window's colour.
"""

import ctypes
import select
import sys
import time

COLOUR = 0xFE01FD  # nothing else has it
SIZE = 8
OVERRIDE_REDIRECT = 1 << 9
Z_PIXMAP = 2
INTERVAL = 0.002  # seconds between two looks
PAUSE = 0.05  # seconds between two redraws, so that the machine has time for the rest
LIMIT = 60  # seconds; a window that has not painted by then never does


class Attributes(ctypes.Structure):
    """What a window is made with; the field that counts here stands behind these others."""

    _fields_ = [("before", ctypes.c_ulong * 4), ("gravities", ctypes.c_int * 3), ("planes", ctypes.c_ulong * 2),
                ("save_under", ctypes.c_int), ("masks", ctypes.c_long * 2), ("override_redirect", ctypes.c_int),
                ("after", ctypes.c_ulong * 2)]


def library():
    x11 = ctypes.CDLL("libX11.so.6")
    for name in ("XOpenDisplay", "XGetImage"):
        getattr(x11, name).restype = ctypes.c_void_p
    for name in ("XDefaultRootWindow", "XCreateSimpleWindow", "XGetPixel"):
        getattr(x11, name).restype = ctypes.c_ulong
    x11.XGetPixel.argtypes = [ctypes.c_void_p, ctypes.c_int, ctypes.c_int]
    x11.XDestroyImage.argtypes = [ctypes.c_void_p]
    return x11


class Probe:
    def __init__(self, display, x, y):
        self.x11, self.x, self.y = library(), x, y
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(display.encode()))
        self.root = ctypes.c_ulong(self.x11.XDefaultRootWindow(self.display))

    def colour(self):
        image = self.x11.XGetImage(self.display, self.root, self.x, self.y, 1, 1, ctypes.c_ulong(0xFFFFFF), Z_PIXMAP)
        value = self.x11.XGetPixel(image, 0, 0)
        self.x11.XDestroyImage(image)
        return value & 0xFFFFFF

    def wait_for_colour(self, covered):
        end = time.monotonic() + LIMIT
        while (self.colour() == COLOUR) != covered:
            if time.monotonic() > end:
                sys.exit(f"the window did not paint within {LIMIT} seconds")
            select.select([], [], [], INTERVAL)

    def redraw(self):
        """Covers the point and uncovers it: the seconds until it is painted."""
        half = SIZE // 2
        place = (self.x - half, self.y - half, SIZE, SIZE, 0)
        own = ctypes.c_ulong(self.x11.XCreateSimpleWindow(self.display, self.root, *place, ctypes.c_ulong(0),
                                                          ctypes.c_ulong(COLOUR)))
        self.x11.XChangeWindowAttributes(self.display, own, ctypes.c_ulong(OVERRIDE_REDIRECT),
                                         ctypes.byref(Attributes(override_redirect=1)))
        self.x11.XMapRaised(self.display, own)
        self.wait_for_colour(True)
        self.x11.XDestroyWindow(self.display, own)
        self.x11.XSync(self.display, 0)
        begun = time.monotonic()
        self.wait_for_colour(False)
        return time.monotonic() - begun


def main():
    probe = Probe(sys.argv[1], int(sys.argv[2]), int(sys.argv[3]))
    while not select.select([sys.stdin], [], [], PAUSE)[0]:
        print(probe.redraw(), flush=True)


if __name__ == "__main__":
    main()
