"""Numbers as the C library reads and prints them."""

import math
import re
import struct

SPACE = b" \t\n\v\f\r"
INT_MIN, INT_MAX = -2 ** 31, 2 ** 31 - 1
U64 = 2 ** 64 - 1


def c_string(text):
    """A string up to its first NUL byte."""
    return text.split(b"\0", 1)[0]


def strtol(text):
    """Decimal integer at the front of the text, saturating at 64 bits."""
    match = re.match(rb"[ \t\n\v\f\r]*([+-]?[0-9]+)", c_string(text))
    if not match:
        return 0
    return max(-2 ** 63, min(2 ** 63 - 1, int(match.group(1))))


def atoi(text):
    """strtol cut to its low 32 bits, signed."""
    low = strtol(text) & 0xFFFFFFFF
    return low - 2 ** 32 if low > INT_MAX else low


FLOAT_FORMS = re.compile(
    rb"(?P<hex>0x(?:[0-9a-f]+\.?[0-9a-f]*|\.[0-9a-f]+)(?:p[+-]?[0-9]+)?)"
    rb"|(?P<decimal>(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:e[+-]?[0-9]+)?)"
    rb"|(?P<inf>inf(?:inity)?)"
    rb"|(?P<nan>nan(?:\([0-9a-z_]*\))?)", re.IGNORECASE)


def atof(text):
    """Double at the front of the text, as strtod reads it; 0 if there is none."""
    text = c_string(text).lstrip(SPACE)
    sign = -1.0 if text[:1] == b"-" else 1.0
    match = FLOAT_FORMS.match(text[1:] if text[:1] in (b"-", b"+") else text)
    if not match:
        return 0.0
    if match.group("inf"):
        value = math.inf
    elif match.group("nan"):
        value = math.nan
    elif match.group("hex"):
        try:
            value = float.fromhex(match.group("hex").decode())
        except OverflowError:
            value = math.inf
    else:
        value = float(match.group("decimal"))
    return math.copysign(value, sign)


def to_float(value):
    """Round a double to single precision."""
    if math.isnan(value) or math.isinf(value):
        return value
    try:
        return struct.unpack("f", struct.pack("f", value))[0]
    except OverflowError:
        return math.copysign(math.inf, value)


def show_double(value):
    """Default stream formatting: six significant digits."""
    if math.isnan(value):
        return b"-nan" if math.copysign(1.0, value) < 0 else b"nan"
    return b"%g" % value


def unsigned64(value):
    """What an unsigned 64-bit field shows of a signed value."""
    return value & U64


def divide(a, b):
    """Division of doubles; nothing over nothing is not a number."""
    if b == 0:
        return math.nan if a == 0 else math.copysign(math.inf, a)
    return a / b
