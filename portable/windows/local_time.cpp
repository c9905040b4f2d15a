#include <tesk/local_time.h>

namespace tesk {

bool LocalTime(std::time_t when, std::tm& local) { return localtime_s(&local, &when) == 0; }

}  // namespace tesk
