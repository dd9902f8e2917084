# The folders of the program, bottom to top. A folder may depend only on
# folders of the layers below its own; folders of one layer are siblings and
# never include each other. Each folder names what it depends on in the one
# DEPENDS line of its CMakeLists.txt; cmake/CheckLayers.cmake compares every
# #include "folder/..." with that line.
set(QUILLOTONE_LAYERS
    "wire"                 # wire facts shared with server/: header-only, includes nothing
    "core"                 # the ground: settings, log, errors, seams, cipher, helpers
    "platform skin"        # our components over the libraries; skinned windows
    "service cd library"   # the web service and accounts; CD ripping; music library
    "delivery"             # the send pipeline and its windows
    "editing"              # the main window and its editors
    "shell"                # start-up and shutdown: the only code that knows every window
    "app"                  # main()
    "server")              # quillotone-service, which shares only the wire facts
