#pragma once
// Asked by the rip button before anything else: is there readable media in
// the first CD drive (or the disc image standing in for it)? A data disc
// counts; the audio tracks are looked for later.
bool CDInDrive();
