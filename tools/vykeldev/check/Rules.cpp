#include "check/Checks.h"
#include <algorithm>

namespace vykeldev::check {

const std::vector<Rule>& allRules() {
    constexpr auto error = Severity::Error;
    constexpr auto warning = Severity::Warning;
    static const std::vector<Rule> rules = {
        {"library-loads", "The library loads", error, "", "",
         "The system cannot load the file, so the plug-in is left out of every list, silently.",
         "Build it for 64-bit Windows and link the C++ runtime statically. Link other libraries statically, "
         "too, or put them on the search path: the plug-in's own folder is not searched.",
         checkLibraryLoads},
        {"entry-points", "It exports the three entry points", error, "library-loads", "",
         "A library that lacks one of them is not used, and none of them is called.",
         "Define the three functions with VYKEL_PLUGIN_EXPORT, which keeps their names as they are.",
         checkEntryPoints},
        {"initialises", "It accepts being initialised", warning, "entry-points", "",
         "A plug-in that refuses is unloaded at once. That may be intended on this machine, but "
         "nothing else can be checked.",
         "Check it on a machine where it works; refuse only when no list could ever be made.",
         checkInitialises},
        {"reload", "It can be initialised and finalised, loaded and unloaded, 110 times", error,
         "initialises", "",
         "A client may initialise the library any number of times, and a plug-in that is registered "
         "twice is initialised twice.",
         "Let vykel_finalizePlugin undo what vykel_initializePlugin did, count the calls, and end your "
         "threads before it returns.",
         checkReload},
        {"new-list", "Every request makes a new list", error, "initialises", "",
         "Each client owns its lists and releases each once. A shared list is released twice; "
         "without a list, the client sees no devices of the plug-in.",
         "Let vykel_getPluginInterface store a new object at each call, or answer with a negative code.",
         checkNewList},
        {"interface-version", "It refuses an interface version that it does not know", warning, "new-list",
         "", "A later library may ask for a later interface and would get today's.",
         "Answer -63193 (VersionMismatch) when the version is not 0.", checkInterfaceVersion},
        {"empty-before-refresh", "A list is empty before its first refresh", warning, "new-list", "",
         "getCount and getDevice answer from the last refresh; before the first there is nothing.",
         "Find the devices in refresh, not when the list is made.", checkEmptyBeforeRefresh},
        {"attach-detach", "attach and detach balance", error, "new-list", "",
         "Clients attach the same token again after they have detached it.",
         "Let detach forget the token, and release whatever is still attached.", checkAttachDetach},
        {"refresh", "isStale, refresh, getCount, getDevice work in this order, again and again", error,
         "new-list", "",
         "The library calls every list in this order. A list whose refresh fails has no devices.",
         "See what was observed. Leave a negative code in refresh only when the devices cannot be reached.",
         checkRefresh},
        {"stale-cheap", "isStale can be called at any time and is cheap", warning, "refresh", "",
         "Clients ask often, some of them many times a second.",
         "Answer from memory; let a notification or a counter show that something changed. The "
         "limit is one millisecond.",
         checkStaleCheap},
        {"stale-settles", "A list that was just refreshed is not stale", warning, "refresh", "",
         "Clients refresh as soon as a list is stale, so this one makes them work all the time.",
         "Note at each refresh what it saw, and compare with that.", checkStaleSettles},
        {"devices", "Every index below the count has a device", error, "refresh", "",
         "An index without a device is left out. An error leaves out all later devices of the list, too.",
         "Return a device for every index below getCount, and do not touch the code then.", checkDevices},
        {"index-beyond", "Indices beyond the count are refused, a million times", error, "refresh", "",
         "A caller must be able to see that there is no such device.",
         "Leave -52005 (InvalidParameter) and return null when the index is not below getCount.",
         checkIndexBeyond},
        {"minimum-version", "A device below the minimum version is refused", warning, "devices", "",
         "The library asks with 0, which accepts every device; other callers may rely on it.",
         "Leave -63193 (VersionMismatch) and return null when the device's version is lower.",
         checkMinimumVersion},
        {"token-present", "Every device has its persistent tokens", error, "devices", "",
         "Legacy aliases are matched by these texts; a device without one never gets its alias.",
         "Return a text for the formats 1 and 2; it may be the same for both.", checkTokenPresent},
        {"tokens-differ", "Devices of one list have different tokens, in each format", warning,
         "token-present", "",
         "Whoever looks for a device by its token, such as a legacy alias, finds the first one that has it.",
         "Add to the token what tells the devices apart, such as the serial number or the place.",
         checkTokensDiffer},
        {"token-stable", "Persistent tokens persist", error, "token-present", "",
         "Aliases are matched by these texts, across restarts and reconnects.",
         "Make them from what belongs to the device, such as a serial number or its place; never from an "
         "address, a counter or the time.",
         checkTokenStable},
        {"devices-stay", "Devices stay as they are until the next refresh", error, "token-stable", "",
         "Clients keep devices until they refresh or release their list.",
         "Keep one object for each device in the list that returned it, and change it "
         "only in refresh and release.",
         checkDevicesStay},
        {"texts-utf8", "Texts are valid UTF-8", error, "devices", "",
         "Clients show and compare these texts as UTF-8.",
         "Convert with WideCharToMultiByte(CP_UTF8, ...); the narrow functions of Windows "
         "use the system's code page.",
         checkTextsUtf8},
        {"texts-stay", "A text stays valid until the next call on the same device", error, "devices", "",
         "Clients read the text of one device while they ask another.",
         "Keep each text in the device that returned it; do not share a buffer between devices.",
         checkTextsStay},
        {"number-kept", "A number that is set is kept (alters a number and puts it back)", error,
         "token-stable", "DeviceList.lck",
         "Numbers are unique on the whole machine: every list and every process must see "
         "them, now and after a restart.",
         "Store the number outside your process in setNumber, and read it from there in getNumber.",
         checkNumberKept},
        {"alias-kept", "An alias that is set is kept (alters an alias and puts it back)", error,
         "token-stable", "vykel.lck",
         "A legacy alias is handed over exactly once. When a plug-in forgets it, it is lost.",
         "Store any valid UTF-8 outside your process in setAlias, or leave a negative code.", checkAliasKept},
        {"first-error-wins", "A code in a status block is kept", error, "index-beyond", "",
         "Callers pass one block to many calls and read it at the end.",
         "Write the code only to report an error, and only when there is none yet; never clear it.",
         checkFirstErrorWins},
        {"release-frees", "release frees everything", error, "refresh", "",
         "Services make and release lists for months.",
         "Free everything that the list holds in release: devices, texts, handles.", checkReleaseFrees},
        {"threads", "Two lists can be used on two threads at once", error, "refresh", "",
         "Two clients refresh on threads of their own, not on the one that loaded the plug-in.",
         "Share nothing between lists, or guard it with a lock; do not depend on "
         "the thread that initialised.",
         checkThreads},
        {"status-guard", "Nothing is written beyond a status block of 8 bytes", error, "refresh", "",
         "The blocks of the library end after the code; what follows is its stack.",
         "Write component, file, line and reserved only when structSize is 208 or more.", checkStatusGuard},
        {"no-exception", "No exception crosses the interface", error, "refresh", "",
         "While loading, the library catches what it can and leaves the plug-in out; in a refresh, the "
         "whole refresh fails, for all plug-ins. An exception of another runtime ends the process.",
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
