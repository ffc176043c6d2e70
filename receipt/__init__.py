"""The virtual receipt printer: what a captured job says, and what it would print."""

from .commands import Command, DecodeError, decode, iterate
from .strip import Note, Strip, Symbol, render

__all__ = ["Command", "DecodeError", "Note", "Strip", "Symbol", "decode", "iterate", "render"]
