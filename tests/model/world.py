"""The outside of a modelled run: its files, its two output streams, its end.

Nothing here touches the disk except to read.  Files that the program would
create are kept in memory, and a later read of such a file sees what has been
written so far.
"""

import os


class Ended(Exception):
    """The process ends with this exit status."""

    def __init__(self, status):
        Exception.__init__(self, status)
        self.status = status


class Disk:
    """The files below one working directory, as bytes names to bytes."""

    def __init__(self, cwd):
        self.cwd = os.path.realpath(os.fsencode(cwd))
        self.written = {}  # real path -> bytearray, every file created or truncated

    def _place(self, name):
        return os.path.join(self.cwd, name)

    def read(self, name):
        """The bytes of a file; OSError when it cannot be opened or read."""
        if not name:
            raise FileNotFoundError(2, os.strerror(2))
        real = os.path.realpath(self._place(name))
        if real in self.written:
            return bytes(self.written[real])
        with open(self._place(name), "rb") as file:
            return file.read()

    def opens(self, name):
        """Whether a file, or a directory, can be opened for reading."""
        try:
            self.read(name)
        except IsADirectoryError:
            pass
        except OSError:
            return False
        return True

    def create(self, name):
        """A fresh, empty file as a bytearray to add to; None when it cannot be made."""
        if not name:
            return None
        real = os.path.realpath(self._place(name))
        if os.path.isdir(real) or not os.path.isdir(os.path.dirname(real)):
            return None
        content = bytearray()
        self.written[real] = content
        return content

    def identity(self, name):
        """What two names of one file have in common; None when there is no such file."""
        if not name:
            return None
        try:
            status = os.stat(self._place(name))
            return (status.st_dev, status.st_ino)
        except OSError:
            pass
        real = os.path.realpath(self._place(name))
        return real if real in self.written else None

    def same_place(self, one, other):
        """Whether two names lead to one place, whether or not there is a file."""
        return bool(one and other) and (os.path.realpath(self._place(one))
                                        == os.path.realpath(self._place(other)))

    def files(self):
        """Every written file by its path below the working directory."""
        return {os.path.relpath(path, self.cwd): bytes(content)
                for path, content in self.written.items()}


class World:
    """One run's disk and streams."""

    def __init__(self, cwd):
        self.disk = Disk(cwd)
        self.stdout = bytearray()
        self.stderr = bytearray()
        self.damaged = False  # a damaged gzip file was met

    def say(self, *pieces):
        """Append to standard error; numbers in decimal."""
        for piece in pieces:
            self.stderr += piece if isinstance(piece, bytes) else str(piece).encode()

    def end(self, status, *pieces):
        """A last message, then the end of the process."""
        self.say(*pieces)
        raise Ended(status)

    def read(self, name):
        """The bytes of a plain input that opens; a directory opens and cannot be read."""
        try:
            return self.disk.read(name)
        except OSError as error:
            self.end(1, b"[ERROR]: can't read ", name, b": ", error.strerror, b"\n")

    def refuse_same_file(self, output, inputs):
        """End the run when the output is one of the inputs, the first that matches.

        An input that does not exist yet is the output's file, too, once the output has been made.
        """
        wanted = self.disk.identity(output)
        if wanted is None:
            if not any(self.disk.same_place(output, name) for name in inputs):
                return
            if self.disk.create(output) is None:
                return
            wanted = self.disk.identity(output)
        for name in inputs:
            if self.disk.identity(name) == wanted:
                self.end(1, b"[ERROR]: output file ", output,
                         b" is the same file as ", name, b"\n")


def lines_of(content):
    """The lines of a text, without their line feeds; a last one without it counts."""
    lines = content.split(b"\n")
    if lines[-1] == b"":
        lines.pop()
    return lines
