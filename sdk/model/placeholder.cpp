// Keeps the target linkable until the room has its first source.
