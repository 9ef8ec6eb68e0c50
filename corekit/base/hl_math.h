// Tables that the toolkit reads: fixed random numbers, and sines and cosines of whole degrees.
#pragma once

extern float randrat[10000];   // 0 to 1, the same in every run
extern float lookup_sin[361];  // of 0 to 360 whole degrees
extern float lookup_cos[361];

// Fills the tables, and then seeds rand() from the clock, so that mirrors are drawn differently in
// each run. Once, at start-up.
void hl_math_init();

// rand() as a number in [0, 1).
float rand_fraction();
