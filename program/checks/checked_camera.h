// Camera files, checked as they are loaded. What is impossible in them is refused unless the user
// forces its use.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <optional>

#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct CheckedCamera {
  FishEyeCalibrationParam param{};
  std::optional<Size> corrected;  // of the corrected picture, if the file notes it
};

// Loads a camera file. Fails as bad input where loadCamera() does, and for everything that `info`
// calls impossible; with `force` it only warns of that, as of what is merely doubtful. A noted size
// that does not fit the record, which somebody has replaced since, is warned of and ignored.
CheckedCamera loadCheckedCamera(const std::filesystem::path& path, bool force,
                                std::ostream& messages);

// Fails as bad input, or with `force` warns, if the second correction was made for another size of
// the corrected picture: positions in it and in the world then do not match.
void requireFittingSize(const CheckedCamera& loaded, const std::filesystem::path& camera,
                        const Size& size, bool force, std::ostream& messages);

}  // namespace fisheye_calibration::program
