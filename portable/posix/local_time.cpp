#include <tesk/local_time.h>

namespace tesk {

bool LocalTime(std::time_t when, std::tm& local) { return localtime_r(&when, &local) != nullptr; }

}  // namespace tesk
