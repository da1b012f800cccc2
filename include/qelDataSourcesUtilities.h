/**
 * @file
 * @brief ODBC connection strings of the application's data sources, and the installed ODBC drivers.
 */
#ifndef QEL_DATA_SOURCES_UTILITIES_H
#define QEL_DATA_SOURCES_UTILITIES_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief One ODBC data source of the catalogue: name, platform and connection string.
 * @ingroup configuration
 *
 * @par Example
 * @code
 * const qelDataSource bolts(L"Bolts", L"DRIVER={Varnel ODBC Driver};DBQ=Bolts.mdb", L"x64");
 * bolts.m_Platform;                                                                          // == L"x64"
 * bolts == qelDataSource(L"BOLTS", L"", L"X64");                                             // == true
 * @endcode
 */
class QEL_API qelDataSource
{
public:
    /// All three fields empty.
    qelDataSource();

    /// Note the order: the platform, second among the fields, comes last.
    qelDataSource(const qelString& name, const qelString& connectionString, const qelString& platform);

    /// Copies all fields.
    qelDataSource(const qelDataSource& other);

    /// Destroys the fields.
    virtual ~qelDataSource();

    /// Copies all fields.
    qelDataSource& operator=(const qelDataSource& other);

    /// Whether name and platform are equal, ignoring case; the connection string does not count.
    bool operator==(const qelDataSource& other) const;

    qelString m_Name;             ///< such as "PelionProfiles2020"
    qelString m_Platform;         ///< platform it is meant for, such as "x64"
    qelString m_ConnectionString; ///< full ODBC connection string
};

static_assert(sizeof(qelDataSource) == 56, "virtual table and three texts");

/**
 * @brief Finds ODBC connection strings by name and platform, and an ODBC driver that will load.
 * @ingroup configuration
 *
 * The catalogue holds three built-in data sources, whose connection strings come from the registry, and those of the
 * configuration file "DatabaseConfiguration.xml" below the data folder. Its connection strings name a driver that is
 * installed.
 *
 * @par Example
 * @code
 * // "PelionProfiles2020" is registered, but its database file is missing.
 * qelDataSourcesUtilities sources;
 * qelString connection;
 * sources.getConnectionString(L"PelionProfiles2020", connection, L"x64"); // == 1
 *
 * qelString head, file;
 * qelDataSourcesUtilities::splitConnectionString(connection, head, file); // == 1
 * file;                                                                   // == L"D:\\Data\\PelionProfiles2020.mdb"
 * qelDataSourcesUtilities::testConnection(connection);                    // == 0, no such file
 * sources.getConnectionString(L"PelionProfiles1990", connection, L"x64"); // == 0, unknown
 * @endcode
 *
 * @par Ownership
 * All state is process-wide and stays until the process ends; objects hold none.
 *
 * @par Threads
 * Not thread-safe: keep all use on one thread, or let one call to getConnectionString() finish first.
 *
 * @par Cost
 * The catalogue is read once, on first use, and again only after a different configuration file has been set; the list
 * of drivers once per process. A look-up is O(1) in the number of data sources.
 *
 * @par Failure
 * When out of memory, the members of the catalogue throw `std::bad_alloc` and those of the drivers throw nothing; both
 * lists are then complete or unread, and the next call reads them. An ODBC installer library that is missing or too old
 * is shown to the user in a message box, which waits for an answer.
 */
class QEL_API qelDataSourcesUtilities
{
public:
    /**
     * Sets the configuration file for the whole process; the default is "\Configuration\DatabaseConfiguration.xml"
     * below the data folder. A different path (ignoring case) empties the catalogue, so that the next
     * getConnectionString() reads it again. Nothing is read here.
     */
    explicit qelDataSourcesUtilities(qelString configurationFile = qelString());

    /// Nothing to copy: all objects share one catalogue.
    qelDataSourcesUtilities(const qelDataSourcesUtilities& other);

    /// The catalogue stays.
    virtual ~qelDataSourcesUtilities();

    /// Changes nothing.
    qelDataSourcesUtilities& operator=(const qelDataSourcesUtilities& other);

    /// @name Catalogue
    /// @{

    /**
     * Looks up the connection string of the first data source of that name and platform, ignoring case; returns 1 when
     * it can be used. Built-in data sources win over entries of the configuration file; the first call reads drivers
     * and catalogue.
     *
     * - A connection string that contains one of the names "PelionProfiles2020", "QELMapping2020" and
     *   "PelionCurrentProject" is returned unchanged, with 1.
     * - In any other, the data folder and a backslash are inserted after the first "DBQ=", whatever path follows; the
     *   result is 1. A path that already begins with the data folder then has it twice.
     * - Without "DBQ=" the result is 0 and `connectionString` holds the string as it is.
     * - For an unknown data source, or one with an empty connection string, the result is 0 and `connectionString` is
     *   empty. An unknown name is reported to the debugger.
     */
    int getConnectionString(qelString name, qelString& connectionString, qelString platform);

    /**
     * Splits a connection string after its first "DBQ=" (case-sensitive): `head` ends with "DBQ=", `databaseFile` is
     * all that follows, further attributes included. Returns 1; without "DBQ=" both are empty and the result is 0.
     */
    static int splitConnectionString(qelString connectionString, qelString& head, qelString& databaseFile);

    /**
     * Makes a connection string for the database file, used as it is, with the driver of getOdbcDriverName() and empty
     * user name and password. Always returns 1.
     */
    static int getConnectionStringForFile(qelString databaseFile, qelString& connectionString);
    /// @}

    /// @name Drivers
    /// The default driver is "Microsoft Access Driver (*.mdb, *.accdb)", the alternate one "Varnel ODBC Driver".
    /// @{

    /**
     * Returns the number of installed ODBC drivers. They are read once per process, or on every call until that
     * succeeds. Where the ODBC installer library is missing or too old, each such call shows a message box.
     */
    static int readInstalledOdbcDrivers();

    /// 1 when the default driver is installed, -1 when only others are, 0 when no driver is known.
    static int defaultODBCDriverIsInstalled();

    /**
     * Sets `driverName` to the driver for new connection strings: the alternate one where the default driver is known
     * to be missing, else the default one. Always returns 1; when out of memory the name is empty.
     */
    static int getOdbcDriverName(qelString& driverName);

    /**
     * Where the default driver is known to be missing, replaces its name with the alternate one everywhere, else the
     * other way round; case-sensitive. Returns the number of replacements; 0 for an empty string, without reading
     * drivers.
     */
    static int replaceAlternateDriver(qelString& connectionString);

    /**
     * Like defaultODBCDriverIsInstalled(), but 0 when drivers are known and a data source of the catalogue names the
     * alternate driver. Does not read the catalogue: an unread one counts as empty.
     */
    static int defaultDriverIsUsedInAllDataSources();

    /**
     * Opens a real connection, without prompting, and closes it. Returns 1 on success, 0 when what follows "DBQ=" names
     * no existing file, -1 for any other failure. A 1 does not prove a sound database: some drivers connect to an empty
     * or damaged file, and only a query would show it. Takes as long as the driver does.
     */
    static int testConnection(qelString connectionString);
    /// @}

private:
    class Drivers;

    /// Appends the built-in data sources and those of the configuration file; returns the number of entries.
    int readConnectionStrings();

    static qelArray<qelDataSource>& m_DataSources;      ///< in reading order; empty means not yet read
    static qelArray<qelString>& m_InstalledOdbcDrivers; ///< in the installer's order; empty means unknown
    static qelString* m_pDatabaseConfigurationFilePath; ///< null until the first object is constructed
};

static_assert(sizeof(qelDataSourcesUtilities) == 8, "virtual table only");

#endif
