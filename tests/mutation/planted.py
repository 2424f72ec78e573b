"""Faults planted on purpose, by name: the place must be there exactly once, so that a rewritten kernel asks for a new one."""

FAULTS = []
