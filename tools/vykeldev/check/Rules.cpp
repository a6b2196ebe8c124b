#include "check/Checks.h"
#include <algorithm>

namespace vykeldev::check {

const std::vector<Rule>& allRules() {
    constexpr auto error = Severity::Error;
    constexpr auto warning = Severity::Warning;
    static const std::vector<Rule> rules = {
        {"library-loads", "The library loads", error, "", "",
         "The system cannot load the file, so the plug-in is left out of every list, silently.",
         "Build it for 64-bit Windows and link the C++ runtime statically; link what else it imports "
         "statically, too, or put it on the search path: its own folder is not searched.",
         checkLibraryLoads},
        {"entry-points", "It exports the three entry points", error, "library-loads", "",
         "A library that lacks one of them is not used; none of them is called then.",
         "Define the three functions with VYKEL_PLUGIN_EXPORT, which keeps their names as they are.",
         checkEntryPoints},
        {"initialises", "It accepts being initialised", warning, "entry-points", "",
         "A plug-in that refuses is unloaded at once. That may be meant on this machine, but nothing else "
         "can "
         "be checked.",
         "Check it on a machine where it works; refuse only when no list could ever be made.",
         checkInitialises},
        {"reload", "It can be initialised and finalised, loaded and unloaded, 110 times", error,
         "initialises", "",
         "A client may initialise the library any number of times, and a plug-in registered twice is "
         "initialised twice at once.",
         "Let vykel_finalizePlugin undo what vykel_initializePlugin did, count the calls, and end your "
         "threads before it returns.",
         checkReload},
        {"new-list", "Every request makes a new list", error, "initialises", "",
         "Each client owns its lists and releases each once; a shared one is released twice, and no list at "
         "all is used as one.",
         "Let vykel_getPluginInterface store a new object at each call, or answer with a negative code.",
         checkNewList},
        {"interface-version", "It refuses an interface version that it does not know", warning, "new-list",
         "", "A later library may ask for a later interface and would be given today's.",
         "Answer -63193 (VersionMismatch) when the version is not 0.", checkInterfaceVersion},
        {"empty-before-refresh", "A list is empty before its first refresh", warning, "new-list", "",
         "getCount and getDevice answer from the last refresh; before the first there is nothing.",
         "Find the devices in refresh, not when the list is made.", checkEmptyBeforeRefresh},
        {"attach-detach", "attach and detach balance", error, "new-list", "",
         "Clients hand the same token in again after they withdrew it.",
         "Let detach forget the token, and release whatever is still attached.", checkAttachDetach},
        {"refresh", "isStale, refresh, getCount, getDevice work in this order, again and again", error,
         "new-list", "",
         "The library calls every list in this order; one whose refresh fails shows no devices.",
         "See what was observed. A negative code from refresh is right only when the devices cannot be "
         "asked.",
         checkRefresh},
        {"stale-cheap", "isStale can be called at any time and is cheap", warning, "refresh", "",
         "Clients ask often, some of them many times a second.",
         "Answer from memory, and let a notification or a counter tell that something changed. The limit is "
         "one millisecond.",
         checkStaleCheap},
        {"stale-settles", "A list that was just refreshed is not stale", warning, "refresh", "",
         "Clients refresh as soon as a list is stale, so this one makes them work all the time.",
         "Note at each refresh what it saw, and compare with that.", checkStaleSettles},
        {"devices", "Every index below the count has a device", error, "refresh", "",
         "The library uses the device whenever no error was left; an error hides all devices behind it.",
         "Return a device for every index below getCount, and leave the code alone then.", checkDevices},
        {"index-beyond", "Indices beyond the count are refused, a million times", error, "refresh", "",
         "A caller must be able to tell that there is no such device.",
         "Leave -52005 (InvalidParameter) and return null when the index is not below getCount.",
         checkIndexBeyond},
        {"minimum-version", "A device below the minimum version is refused", warning, "devices", "",
         "The library asks with 0, which accepts every device; other callers may rely on it.",
         "Leave -63193 (VersionMismatch) and return null when the device's version is lower.",
         checkMinimumVersion},
        {"token-present", "Every device has its persistent tokens", error, "devices", "",
         "The library reads both formats without looking for null.",
         "Return a text for the formats 1 and 2; the same one is right when you have but one.",
         checkTokenPresent},
        {"token-stable", "Persistent tokens persist", error, "token-present", "",
         "Aliases are matched by these texts, across restarts and reconnects.",
         "Make them of what belongs to the device, such as a serial number or its place; never of an "
         "address, a counter or the time.",
         checkTokenStable},
        {"devices-stay", "Devices stay as they are until the next refresh", error, "token-stable", "",
         "Clients keep devices until they refresh or release their list.",
         "Keep one object for each device in the list that returned it, and touch them in refresh and "
         "release alone.",
         checkDevicesStay},
        {"texts-utf8", "Texts are valid UTF-8", error, "devices", "",
         "Clients show and compare these texts as UTF-8.",
         "Convert with WideCharToMultiByte(CP_UTF8, ...); the narrow functions of Windows answer in its "
         "code page.",
         checkTextsUtf8},
        {"texts-stay", "A text stays valid until the next call on the same device", error, "devices", "",
         "Clients read the text of one device while they ask another.",
         "Keep each text in the device that returned it; share no buffer between devices.", checkTextsStay},
        {"number-kept", "A number that is set is kept (alters a number and puts it back)", error,
         "token-stable", "DeviceList.lck",
         "Numbers are one space for the whole machine: every list, process and later start must see them.",
         "Store the number outside your process in setNumber, and read it afresh in getNumber.",
         checkNumberKept},
        {"alias-kept", "An alias that is set is kept (alters an alias and puts it back)", error,
         "token-stable", "vykel.lck",
         "A legacy alias is handed over exactly once; a plug-in that forgets it has lost it for good.",
         "Store the alias outside your process in setAlias, any valid UTF-8, or leave a negative code.",
         checkAliasKept},
        {"first-error-wins", "A code in a status block is kept", error, "index-beyond", "",
         "Callers pass one block through many calls and look at it in the end.",
         "Write the code only to report an error, and only when there is none yet; never clear it.",
         checkFirstErrorWins},
        {"release-frees", "release frees everything", error, "refresh", "",
         "Services make and release lists for months.",
         "Free in release whatever the list holds: devices, texts, handles.", checkReleaseFrees},
        {"threads", "Two lists can be used on two threads at once", error, "refresh", "",
         "Two clients refresh on threads of their own, other ones than loaded the plug-in.",
         "Share nothing between lists, or guard it; tie nothing to the thread that initialised.",
         checkThreads},
        {"status-guard", "Nothing is written beyond a status block of 8 bytes", error, "refresh", "",
         "The blocks of the library end behind the code; what lies there is its stack.",
         "Write component, file, line and reserved only when structSize is 208 or more.", checkStatusGuard},
        {"no-exception", "No exception crosses the interface", error, "refresh", "",
         "The library catches what it can and drops the plug-in; an exception of another runtime ends the "
         "process.",
         "Wrap each entry point and operation in try { ... } catch (...) { status->code = ...; }.",
         checkNoException},
    };
    return rules;
}

const Rule* findRule(std::string_view id) {
    const auto& rules = allRules();
    const auto found =
        std::find_if(rules.begin(), rules.end(), [id](const Rule& rule) { return rule.id == id; });
    return found == rules.end() ? nullptr : &*found;
}

} // namespace vykeldev::check
