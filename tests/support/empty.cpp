// Keeps the library valid while it has no other source.
