#pragma once

// Cuts what one read delivered into frames and gives each to the first entry of g_Subsystems whose id it bears. Frames
// for nobody are passed over, and an unfinished one at the end is dropped: nothing survives from one read to the next.
// Logs nothing. Runs on a wait thread; `data` isn't changed.
void RouteFrames(const unsigned char* data, unsigned int count);
