// Anchors the precompiled header.
