# The tasks of this project; `make` alone lists them.

.DEFAULT_GOAL := help
.PHONY: help build demo browse test bench lint coverage fuzz soak servers screenshots dist clean format

RELEASE := build/release

help: ## List the tasks
	@awk -F ':.*## ' '/^[a-z]+:.*## / {printf "  make %-11s %s\n", $$1, $$2}' $(MAKEFILE_LIST)

build: ## Build the DLL, its companions and the tests for Windows x64
	@tools/setup
	@tools/build release

demo: ## Set up what is missing, build, and run the sample clients on sample depots
	@tools/setup
	@tools/build release
	@tools/demo

browse: ## Open the browse dialog on the sample depots; needs a screen
	@tools/setup screenshots
	@tools/build release
	@tools/browse

# With WINE10=1 everything is built and run in a Debian 13, with Wine 10 and g++ 14.
ifdef WINE10
test:
	@tools/setup wine10
	@tools/wine10 tools/build release
	@tools/wine10 tools/run-tests release
else
test: ## Set up what is missing, build, and run all tests (WINE10=1: with a later Wine and g++)
	@tools/setup lint dist
	@tools/build release
	@tools/build native
	@tools/lint quick
	@tools/run-tests native
	@tools/run-tests release
endif

bench: ## Measure the component against the raw system calls
	@tools/setup
	@tools/build release
	@tools/bench

lint: ## Check formatting, layering and the code itself
	@tools/setup lint fuzz
	@tools/build release
	@tools/lint full

format: ## Format the sources in place
	@tools/setup lint
	@tools/lint format

coverage: ## Measure the coverage by all tests
	@tools/setup
	@tools/build coverage
	@tools/coverage

screenshots: ## Take the pictures of the dialogs for the documents
	@tools/setup screenshots
	@tools/build release
	@tools/screenshots

fuzz: ## Look for inputs that break the pure code, a minute per target
	@tools/setup fuzz
	@tools/build fuzz
	@tools/build release
	@tools/fuzz

soak: ## Run 10,000 sessions on each store, let every system call fail once, and both stores meet disasters
	@tools/setup
	@tools/build release
	@DEPOTINTR_SOAK_SESSIONS=10000 tools/with-slapd tools/wine-run $(RELEASE)/bin/soak_test.exe
	@DEPOTINTR_THOROUGH=1 tools/with-slapd tools/wine-run $(RELEASE)/bin/faults_test.exe
	@DEPOTINTR_SEEDS=1000 tools/with-slapd tools/wine-run $(RELEASE)/bin/disasters_test.exe
	@DEPOTINTR_TEST_KEEP=60 DEPOTINTR_THOROUGH=1 tools/with-slapd tools/wine-run $(RELEASE)/bin/faults_test.exe \
		--gtest_filter='*Corp*:*Transfer*'
	@DEPOTINTR_TEST_KEEP=60 tools/with-slapd tools/wine-run $(RELEASE)/bin/directory_depots_test.exe \
		--gtest_filter='-*OneBind*:*NoConnectionStays*:*ExistingEntryIsWritableAndStays:ConflictTest.ServerIsAskedOnce*:ConflictTest.LastWriterWins*:DirectoryMemoryTest.LoadThat*:*CostsWhatItCosts*:OfflineTest.TheSameSessionStores*:OfflineTest.AServerThatIsLostBetween*'
	@DEPOTINTR_TEST_KEEP=60 tools/with-slapd tools/wine-run $(RELEASE)/bin/directory_component_test.exe \
		--gtest_filter='-RoundTrips*:QuestionTest.*:*AskedDllThatCannotAsk*:*AskedDllThatNoPersonSees*:*CostWhatTheyNeed'
	@DEPOTINTR_THOROUGH=1 tools/with-slapd tools/wine-run $(RELEASE)/bin/directory_depots_test.exe \
		--gtest_filter='KilledWritersTest.*'
	@DEPOTINTR_SEEDS=100 DEPOTINTR_ROUNDS=1000 tools/with-slapd tools/wine-run \
		$(RELEASE)/bin/directory_depots_test.exe --gtest_filter='ApartSimulation.*'

servers: ## Run the operations of a session against every directory server, and print a table
	@tools/setup servers
	@tools/build release
	@tools/conformance

dist: ## Leave in dist/ what users install (SIGN_PFX=file.pfx signs it)
	@tools/setup dist
	@tools/build release
	@tools/dist

clean: ## Remove everything that was built
	rm -rf build dist
