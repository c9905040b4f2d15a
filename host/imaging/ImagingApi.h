// Visibility of the imaging library's classes (the host library is built with
// hidden visibility).
#pragma once
#define VIMAGING_API __attribute__((visibility("default")))
