#pragma once

// Marks what libharbor6 gives to hosts and formats. Everything is hidden unless it bears the mark, and every
// class whose objects or exceptions cross a library border must bear it.
#define HARBOR6_API __attribute__((visibility("default")))
