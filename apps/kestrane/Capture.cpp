#include <memory>
#include <string>

#include "Camera.h"
#include "Commands.h"
#include "Failure.h"
#include "Numbers.h"
#include "Output.h"
#include "Scene.h"

namespace {

struct CaptureOptions {
    std::string file;
    std::string picture;
    std::string time = "0";
    bool json = false;
    Camera camera;
};

int RunCapture(CaptureOptions& options) {
    options.camera.Parse();
    RequirePictureName(options.picture);
    const double time = ParseTime(options.time, "--time");
    Scene scene(options.file, Showing::kInMemory);
    options.camera.Apply();
    scene.SetTime(time);
    WritePicture(options.camera.View(), options.picture);
    if (options.json) {
        Write(Json{{"command", "capture"},
                   {"file", options.file},
                   {"picture", options.picture},
                   {"view", options.camera.View()},
                   {"time", TimeNumber(time)},
                   {"width", options.camera.Width()},
                   {"height", options.camera.Height()}}
                  .dump(2) +
              "\n");
    } else {
        Write(options.picture + ": view " + std::to_string(options.camera.View()) + " of " +
              options.file + " at time " + TimeText(time) + ", " +
              std::to_string(options.camera.Width()) + " x " +
              std::to_string(options.camera.Height()) + " pixels\n");
    }
    return kFree;
}

}  // namespace

void AddCaptureCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "capture", "Write a picture of a scene to a BMP file. Needs no screen.");
    command.footer(
        "Without --eye and --point the camera is where the scene file puts it, or else where all\n"
        "of the scene is seen.\n"
        "\nExamples:\n"
        "  kestrane capture robot_cell.xml cell.bmp\n"
        "  kestrane capture robot_cell.xml cell.bmp --time 7.7 --size 1600x1200\n"
        "  kestrane capture robot_cell.xml cell.bmp --eye 4 3 5 --point 0 1 0\n"
        "\nExit status: 0 the picture was written, 2 error (with one line on the standard error "
        "stream).");
    auto options = std::make_shared<CaptureOptions>();
    command.add_option("FILE", options->file, "Scene file (.xml, .wrl)")->required();
    command.add_option("OUT", options->picture, "The picture (.bmp)")->required();
    command.add_option("--time", options->time, "Time; 0 by default")->option_text("T");
    options->camera.AddTo(command);
    command.add_flag("--json", options->json, "Answer in JSON");
    command.callback([options, &action] { action = [options] { return RunCapture(*options); }; });
}
