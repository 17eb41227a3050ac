#pragma once

// Marks what libharbor6 exports to hosts and formats; everything without the mark is hidden. A class needs it
// if its objects or exceptions cross a library border.
#define HARBOR6_API __attribute__((visibility("default")))
