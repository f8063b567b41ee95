// Camera files, checked as they are loaded. What is impossible in them is refused unless the user
// forces its use.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>

#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct CheckedCamera {
  FishEyeCalibrationParam param{};
  std::optional<Size> image;      // of the raw picture, if the file notes it
  std::optional<Size> corrected;  // of the corrected picture, if the file notes it
};

// Loads a camera file. Fails as bad input where loadCamera() does, and for everything that `info`
// calls impossible; with `force` it only warns of that, as of what is merely doubtful. Notes about
// another record, which somebody has replaced since, are warned of and ignored.
CheckedCamera loadCheckedCamera(const std::filesystem::path& path, bool force,
                                std::ostream& messages);

// Fails as bad input, or with `force` warns, if the file notes another size of the raw picture.
void requireFrameSize(const CheckedCamera& loaded, const std::filesystem::path& camera,
                      const std::string& frame, const Size& size, bool force,
                      std::ostream& messages);

// Fails as bad input, or with `force` warns, if the second correction was made for another size of
// the corrected picture: positions in it and in the world then do not match.
void requireFittingSize(const CheckedCamera& loaded, const std::filesystem::path& camera,
                        const Size& size, bool force, std::ostream& messages);

}  // namespace fisheye_calibration::program
