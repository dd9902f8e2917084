#pragma once
// Asked by the rip button before anything else: is there an audio CD in the
// first CD drive (or the disc image standing in for it)? A disc of data
// alone is turned away at once, before any name lookup.
bool CDInDrive();
