"""The virtual receipt printer: what a captured job says, and what it would print."""

from .commands import Command, DecodeError, decode, iterate
from .strip import Logo, Note, Strip, Symbol, render

__all__ = ["Command", "DecodeError", "Logo", "Note", "Strip", "Symbol", "decode", "iterate", "render"]
