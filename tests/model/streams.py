"""Lines out of read files, plain and gzip, and the shapes of records."""

from gunzip import gunzip

GZIP_LINE = 1023  # longest piece that one gzip read gives


class PlainStream:
    """A text stream read by lines; a failed read looks like the end."""

    def __init__(self, content):
        self.content = content
        self.at = 0
        self.ended = False  # a read has run into the end of the file

    def line(self, old):
        """The next line; old when the stream has ended already, empty when it ends now."""
        if self.ended:
            return old
        end = self.content.find(b"\n", self.at)
        if end < 0:
            self.ended = True
            line = self.content[self.at:]
            self.at = len(self.content)
            return line
        line = self.content[self.at:end]
        self.at = end + 1
        return line


class GzipStream:
    """A gzip file read by lines into one line buffer."""

    def __init__(self, content):
        self.content, self.damage = gunzip(content)
        self.at = 0
        self.buffer = b""
        self.at_damage = False  # a read needed more than could be unpacked

    def read(self):
        """Fill the line buffer; False, and the buffer as it was, when nothing is left."""
        piece = self.content[self.at:self.at + GZIP_LINE]
        end = piece.find(b"\n")
        if end >= 0:
            piece = piece[:end + 1]
        elif len(piece) < GZIP_LINE:
            self.at_damage = self.damage is not None
        if not piece:
            return False
        self.at += len(piece)
        self.buffer = piece.split(b"\0", 1)[0]
        return True

    def kept(self):
        """The line buffer without its last character."""
        return self.buffer[:-1]


class Shape:
    """The lines of one record."""

    def __init__(self, lines, keep_a, keep_b=None):
        self.lines = lines
        self.keep_a = keep_a  # index of the line that goes to the first buffer
        self.keep_b = keep_b  # ... and to the second, in an interleaved file


FASTA, FASTQ = Shape(2, 1), Shape(4, 1)
FASTA_PAIR, FASTQ_PAIR = Shape(4, 1, 3), Shape(8, 1, 5)
