/// What Open CASCADE's STEP classes leave behind for good: a few objects at their first use and per file that is
/// written. Read by the leak sanitizer, where there is one.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();

extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions()
{
    return "leak:Standard_MMgrRaw::Allocate\n"
           "leak:IFSelect_Editor::IFSelect_Editor\n"
           "leak:GeomToStep_Make\n"
           "leak:TPrsStd_DriverTable::Get\n";
}
