// The status record of the voice assistant, and the partner app's web storage.
#pragma once

#include <string>

namespace Carvoy {

/**
 * Two stores that the service does not own, each opened and closed within the call that needs it. All
 * operations are synchronous and may be called from any thread.
 */
class DBControl {
  public:
    DBControl() = delete;

    /**
     * Writes the fields that are not negative into the assistant's status record and leaves the others as
     * they are. `isLoggedIn` and `isLinked` are 0 or 1, the counts 0 or more. With nothing to write the store
     * is not touched. Returns 0, or the error code of the first call to the store that failed.
     */
    static int updateStatus(int isLoggedIn, int isLinked, int totalCount, int productCountInCart,
                            int currentViewType);

    /**
     * The text stored under `key` in the partner app's web local storage, up to its first zero byte. Empty
     * where there is none, and after an error, which is logged. The key goes into the statement as it stands:
     * one that holds a double quote finds nothing. Waits for the partner app's own writing for 3 seconds at
     * most, and gives up a look-up that does not come to an end.
     */
    static std::string getTextValueFromTextKey(std::string key);

    static std::string getXAuthAccessToken();
    static std::string getXAuthSessionToken();

    static inline const std::string CarvoyDBKeyXAuthAccessToken = "X-Auth-Access-Token";
    static inline const std::string CarvoyDBKeyXAuthSessionToken = "X-Auth-Session-Token";

  private:
    static const std::string CarvoyDBPath;
    static inline const std::string CarvoyDBTableName = "ItemTable";
    static inline const std::string CarvoyDBColumnKey = "key";
    static inline const std::string CarvoyDBColumnValue = "value";
    static constexpr int CarvoyDBTimeout = 3000;  // ms

    // Of the database's machine. A search through a million rows takes less; one that a file's schema makes
    // endless is given up.
    static constexpr int CarvoyDBMaxSteps = 4'000'000;
    static int giveUp(void*) { return 1; }

    static inline const std::string CarvoyNDDColumnIsLoggedIn = "isLoggedIn";
    static inline const std::string CarvoyNDDColumnIsLinked = "isLinked";
    static inline const std::string CarvoyNDDColumnTotalCount = "totalCount";
    static inline const std::string CarvoyNDDColumnProductCountInCart = "productCountInCart";
    static inline const std::string CarvoyNDDColumnCurrentViewType = "currentViewType";
};

}  // namespace Carvoy
