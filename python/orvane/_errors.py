"""What Orvane raises. The sentence is the same that its programs write: what was tried, and what helps."""


class Error(Exception):
    """Whatever Orvane itself refuses. What is wrong with an argument alone is a ValueError or TypeError."""


class SettingsError(Error, ValueError):
    """A setting that is out of range, unknown or of the wrong kind; the sentence names it as in JSON."""


class FileError(Error, OSError):
    """A file that cannot be read or written."""


class NodeError(Error, LookupError):
    """A node, a material or a file of a model that there isn't."""


class ContextError(Error, RuntimeError):
    """There is no GL to draw with."""


class ClosedError(Error, RuntimeError):
    """What is asked of a closed model, of a removed node, or after the interpreter's end."""
