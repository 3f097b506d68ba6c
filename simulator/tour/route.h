// The way of the tour.
#pragma once

class Hand;

void goThroughTheScreens(Hand &hand);
