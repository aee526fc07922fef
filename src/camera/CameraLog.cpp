#include "camera/CameraLog.h"

Q_LOGGING_CATEGORY(lcCamera, "quillory.camera")
