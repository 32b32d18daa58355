%code requires {
#include "modeler/mexpression.h"
#include "modeler/miterator.h"
#include "modeler/mstatement.h"
#include "modeler/parsestate.h"
}

%code {
#include "api/qxexception.h"
#include "modeler/userfunction.h"

int yylex(YYSTYPE* lvalp, YYLTYPE* llocp, void* scanner);
static void yyerror(YYLTYPE* location, void* scanner, ParseState* state, const char* message);

// A node stands at the line of its rule's first token (@$), a binary
// operator at its operator's (@2): where the user wrote it, not where the
// parser happened to reduce it.
#define FILE_ state->fileName
// The generated parser's own stack: long right-nested chains (an else-if
// chain of 100,000 branches) need it deep; it grows only as used. While the
// parser follows many readings at once it may not grow: nested prefixes it
// cannot settle yet (f(a[f(a[... left open, each a call or an index) double
// the readings at every level, and would take time exponential in the
// nesting; such a program gets "memory exhausted" instead. 1024 readings
// leave room for index expressions nested ten deep.
#define YYMAXDEPTH (yystackp->yytops.yysize > 1024 ? 0 : 100000000)
// Creates a node, hands it to the program and stops on excessive nesting.
#define NODE(target, expr)                     \
    do {                                       \
        target = expr;                         \
        if (!state->track(target)) YYABORT;    \
    } while (0)
// After a node already tracked grew by one more child.
#define NEST(node)                                                            \
    do {                                                                      \
        if ((node)->getDepth() > ParseState::kMaxNesting) {                   \
            state->fail("Program nested too deeply (more than " +             \
                        std::to_string(ParseState::kMaxNesting) + " levels)."); \
            YYABORT;                                                          \
        }                                                                     \
    } while (0)
}

%glr-parser
%locations
%expect 2
%expect-rr 1
%define api.pure
%define parse.error custom
%lex-param {void* scanner}
%parse-param {void* scanner} {ParseState* state}

%union {
    long long ival;
    const std::string* str;
    MExpression* expr;
    MStatement* stmt;
    MBlock* block;
    MCompositor* comp;
    MIterator* iter;
    MNameList* names;
    MFunctionCall* call;
    MTableDeclaration* table;
    bool link;
}

%token END 0 "end-of-file"
%token <str> IDENTIFIER "variable or function name"
%token <ival> INTEGER "integer"
%token <str> STRING "string"
%token MINIMIZE "minimize keyword" MAXIMIZE "maximize keyword" CONSTRAINT "constraint keyword"
%token TRUE_KW "true keyword" FALSE_KW "false keyword" NIL_KW "nil keyword"
%token FOR "for keyword" IN "in keyword" IF "if keyword" ELSE "else keyword"
%token FUNCTION "function keyword" RETURN "return keyword" LOCAL "local keyword"
%token DO "do keyword" WHILE "while keyword"
%token LARROW "<- operator" AND "&& operator" OR "|| operator" LEQ "<= operator"
%token GEQ ">= operator" EQ "== operator" NEQ "!= operator" DOTDOT ".. operator"

%type <expr> expression brace_expression primary_expression
%type <stmt> statement assignment_statement local_statement if_else_statement for_statement
%type <stmt> while_statement dowhile_statement modifier_statement function_call_statement
%type <stmt> return_statement
%type <block> block_statement statement_list
%type <comp> func_compositor assg_compositor
%type <iter> filter_iterator simple_iterator
%type <names> key_value identifier_list
%type <call> function_call func_arg_list
%type <table> table_expression table_list
%type <link> assignment_operator

%right '?' ':'
%left OR
%left AND
%left EQ NEQ
%left '<' '>' LEQ GEQ
%left '+' '-'
%left '*' '/' '%'
%right UNARY
%nonassoc LOWER_THAN_ELSE
%nonassoc ELSE

%start start

%%

start: %empty | yyprogram ;

yyprogram: function | yyprogram function ;

function
    : FUNCTION IDENTIFIER '(' identifier_list ')' block_statement {
          std::vector<std::string> params;
          for (const std::string* p : $4->names) params.push_back(*p);
          UserFunction* f = nullptr;
          try {
              f = new UserFunction(*$2, params, $6, state->program->getGlobalVariables());
              UserFunction* added = f;
              f = nullptr;
              state->program->addFunction(added);
          } catch (const QXException& e) {
              delete f;
              state->failPlain(e.getExplanation());
              YYABORT;
          }
      }
    | FUNCTION IDENTIFIER '(' ')' block_statement {
          try {
              state->program->addFunction(new UserFunction(
                  *$2, std::vector<std::string>(), $5, state->program->getGlobalVariables()));
          } catch (const QXException& e) {
              state->failPlain(e.getExplanation());
              YYABORT;
          }
      }
    ;

identifier_list
    : IDENTIFIER { NODE($$, new MNameList(FILE_, @$.first_line)); $$->names.push_back($1); }
    | identifier_list ',' IDENTIFIER { $$ = $1; $$->names.push_back($3); }
    ;

statement
    : block_statement { $$ = $1; }
    | assignment_statement
    | local_statement
    | if_else_statement
    | for_statement
    | while_statement
    | dowhile_statement
    | modifier_statement
    | function_call_statement
    | return_statement
    | ';' { MBlock* b; NODE(b, new MBlock(FILE_, @$.first_line)); $$ = b; }
    ;

block_statement
    : '{' '}' { NODE($$, new MBlock(FILE_, @$.first_line)); }
    | '{' statement_list '}' { $$ = $2; $$->setLine(@1.first_line); }
    ;

statement_list
    : statement { NODE($$, new MBlock(FILE_, @$.first_line)); $$->addStatement($1); NEST($$); }
    | statement_list statement { $$ = $1; $$->addStatement($2); NEST($$); }
    ;

assignment_operator: '=' { $$ = false; } | LARROW { $$ = true; } ;

assignment_statement
    : IDENTIFIER assignment_operator expression ';'
        { NODE($$, new MAssignment(FILE_, @$.first_line, $1, $3, false, $2)); }
    | IDENTIFIER assg_compositor assignment_operator expression ';'
        { NODE($$, new MForAssignment(FILE_, @$.first_line, $1, $2, $4, false, $3)); }
    | LOCAL IDENTIFIER assignment_operator expression ';'
        { NODE($$, new MAssignment(FILE_, @$.first_line, $2, $4, true, $3)); }
    | LOCAL IDENTIFIER assg_compositor assignment_operator expression ';'
        { NODE($$, new MForAssignment(FILE_, @$.first_line, $2, $3, $5, true, $4)); }
    ;

local_statement: LOCAL IDENTIFIER ';' { NODE($$, new MLocal(FILE_, @$.first_line, $2)); } ;

if_else_statement
    : IF '(' expression ')' statement %prec LOWER_THAN_ELSE
        { NODE($$, new MIf(FILE_, @$.first_line, $3, $5, nullptr)); }
    | IF '(' expression ')' statement ELSE statement
        { NODE($$, new MIf(FILE_, @$.first_line, $3, $5, $7)); }
    ;

for_statement: FOR func_compositor statement { NODE($$, new MFor(FILE_, @$.first_line, $2, $3)); } ;

while_statement
    : WHILE '(' expression ')' statement { NODE($$, new MWhile(FILE_, @$.first_line, $3, $5)); } ;

dowhile_statement
    : DO statement WHILE '(' expression ')' ';'
        { NODE($$, new MDoWhile(FILE_, @$.first_line, $2, $5)); }
    ;

modifier_statement
    : MINIMIZE expression ';' { NODE($$, new MModifier(FILE_, @$.first_line, ModifierType::Minimize, $2)); }
    | MAXIMIZE expression ';' { NODE($$, new MModifier(FILE_, @$.first_line, ModifierType::Maximize, $2)); }
    | CONSTRAINT expression ';' { NODE($$, new MModifier(FILE_, @$.first_line, ModifierType::Constraint, $2)); }
    ;

function_call_statement
    : function_call ';' { NODE($$, new MCallStatement(FILE_, @$.first_line, $1)); } ;

return_statement
    : RETURN ';' { NODE($$, new MReturn(FILE_, @$.first_line, nullptr)); }
    | RETURN expression ';' { NODE($$, new MReturn(FILE_, @$.first_line, $2)); }
    ;

function_call
    : IDENTIFIER '(' ')' { NODE($$, new MFunctionCall(FILE_, @$.first_line, $1)); }
    | IDENTIFIER '(' func_arg_list ')' { $$ = $3; $$->setName($1); $$->setLine(@1.first_line); }
    | IDENTIFIER func_compositor '(' func_arg_list ')'
        { $$ = $4; $$->setName($1); $$->setLine(@1.first_line); $$->setCompositor($2); NEST($$); }
    ;

/* The argument list is collected in a call node named later by its rule. */
func_arg_list
    : expression { NODE($$, new MFunctionCall(FILE_, @$.first_line, nullptr)); $$->addArgument($1); NEST($$); }
    | func_arg_list ',' expression { $$ = $1; $$->addArgument($3); NEST($$); }
    ;

func_compositor
    : '[' filter_iterator ']' { NODE($$, new MCompositor(FILE_, @$.first_line)); $$->addIterator($2); NEST($$); }
    | func_compositor '[' filter_iterator ']' { $$ = $1; $$->addIterator($3); NEST($$); if ((int)$$->size() > ParseState::kMaxNesting) { state->fail("Program nested too deeply (more than " + std::to_string(ParseState::kMaxNesting) + " levels)."); YYABORT; } }
    ;

assg_compositor
    : '[' expression ']'
        { MIterator* it; NODE(it, new MSingleIterator(FILE_, @$.first_line, $2)); NODE($$, new MCompositor(FILE_, @$.first_line)); $$->addIterator(it); NEST($$); }
    | '[' filter_iterator ']' { NODE($$, new MCompositor(FILE_, @$.first_line)); $$->addIterator($2); NEST($$); }
    | assg_compositor '[' expression ']'
        { MIterator* it; NODE(it, new MSingleIterator(FILE_, @$.first_line, $3)); $$ = $1; $$->addIterator(it); NEST($$); if ((int)$$->size() > ParseState::kMaxNesting) { state->fail("Program nested too deeply (more than " + std::to_string(ParseState::kMaxNesting) + " levels)."); YYABORT; } }
    | assg_compositor '[' filter_iterator ']' { $$ = $1; $$->addIterator($3); NEST($$); if ((int)$$->size() > ParseState::kMaxNesting) { state->fail("Program nested too deeply (more than " + std::to_string(ParseState::kMaxNesting) + " levels)."); YYABORT; } }
    ;

filter_iterator
    : key_value IN simple_iterator ':' expression
        { NODE($$, new MFilterIterator(FILE_, @$.first_line, $1->names, $3, $5)); }
    | key_value IN simple_iterator
        { NODE($$, new MFilterIterator(FILE_, @$.first_line, $1->names, $3, nullptr)); }
    | expression DOTDOT expression { NODE($$, new MRangeIterator(FILE_, @2.first_line, $1, $3)); }
    ;

simple_iterator
    : expression { NODE($$, new MValueIterator(FILE_, @$.first_line, $1)); }
    | expression DOTDOT expression { NODE($$, new MRangeIterator(FILE_, @2.first_line, $1, $3)); }
    ;

key_value
    : IDENTIFIER { NODE($$, new MNameList(FILE_, @$.first_line)); $$->names.push_back($1); }
    | IDENTIFIER ',' IDENTIFIER
        { NODE($$, new MNameList(FILE_, @$.first_line)); $$->names.push_back($1); $$->names.push_back($3); }
    ;

expression
    : brace_expression
    | expression '?' expression ':' expression { NODE($$, new MTernary(FILE_, @2.first_line, $1, $3, $5)); }
    | expression OR expression { NODE($$, new MOr(FILE_, @2.first_line, $1, $3)); }
    | expression AND expression { NODE($$, new MAnd(FILE_, @2.first_line, $1, $3)); }
    | expression EQ expression { NODE($$, new MComparison(FILE_, @2.first_line, MComparison::Eq, $1, $3)); }
    | expression NEQ expression { NODE($$, new MComparison(FILE_, @2.first_line, MComparison::Neq, $1, $3)); }
    | expression '<' expression { NODE($$, new MComparison(FILE_, @2.first_line, MComparison::Lt, $1, $3)); }
    | expression '>' expression { NODE($$, new MComparison(FILE_, @2.first_line, MComparison::Gt, $1, $3)); }
    | expression LEQ expression { NODE($$, new MComparison(FILE_, @2.first_line, MComparison::Leq, $1, $3)); }
    | expression GEQ expression { NODE($$, new MComparison(FILE_, @2.first_line, MComparison::Geq, $1, $3)); }
    | expression '+' expression { NODE($$, new MSum(FILE_, @2.first_line, $1, $3)); }
    | expression '-' expression { NODE($$, new MSub(FILE_, @2.first_line, $1, $3)); }
    | expression '*' expression { NODE($$, new MProduct(FILE_, @2.first_line, $1, $3)); }
    | expression '/' expression { NODE($$, new MDivide(FILE_, @2.first_line, $1, $3)); }
    | expression '%' expression { NODE($$, new MModulo(FILE_, @2.first_line, $1, $3)); }
    | '+' expression %prec UNARY { $$ = $2; }
    | '-' expression %prec UNARY { NODE($$, new MMinus(FILE_, @$.first_line, $2)); }
    | '!' expression %prec UNARY { NODE($$, new MNot(FILE_, @$.first_line, $2)); }
    ;

brace_expression
    : primary_expression
    | '(' expression ')' { $$ = $2; }
    | brace_expression '[' expression ']' { NODE($$, new MIndexer(FILE_, @2.first_line, $1, $3)); }
    ;

primary_expression
    : TRUE_KW { NODE($$, new MValue(FILE_, @$.first_line, Value(1))); }
    | FALSE_KW { NODE($$, new MValue(FILE_, @$.first_line, Value(0))); }
    | NIL_KW { NODE($$, new MValue(FILE_, @$.first_line, Value())); }
    | STRING { NODE($$, new MValue(FILE_, @$.first_line, Value(*$1))); }
    | INTEGER { NODE($$, new MValue(FILE_, @$.first_line, Value($1))); }
    | IDENTIFIER { NODE($$, new MIdentifier(FILE_, @$.first_line, $1)); }
    | function_call { $$ = $1; }
    | table_expression { $$ = $1; }
    ;

table_expression
    : '{' '}' { NODE($$, new MTableDeclaration(FILE_, @$.first_line)); }
    | '{' table_list '}' { $$ = $2; $$->setLine(@1.first_line); }
    ;

table_list
    : expression { NODE($$, new MTableDeclaration(FILE_, @$.first_line)); $$->addElement(nullptr, $1); NEST($$); }
    | STRING '=' expression { NODE($$, new MTableDeclaration(FILE_, @$.first_line)); $$->addElement($1, $3); NEST($$); }
    | table_list ',' expression { $$ = $1; $$->addElement(nullptr, $3); NEST($$); }
    | table_list ',' STRING '=' expression { $$ = $1; $$->addElement($3, $5); NEST($$); }
    ;

%%

static void yyerror(YYLTYPE*, void*, ParseState* state, const char* message) { state->fail(message); }

// The generated parser's verbose form, with the tokens' display names: up to
// four expected tokens are listed, none when there are more.
static int yyreport_syntax_error(const yypcontext_t* context, void*, ParseState* state) {
    std::string message = "syntax error";
    yysymbol_kind_t unexpected = yypcontext_token(context);
    // Display names are printed in double quotes, characters in single ones.
    auto name = [](yysymbol_kind_t symbol) {
        std::string text = yysymbol_name(symbol);
        return text[0] == '\'' || text[0] == '"' ? text : '"' + text + '"';
    };
    if (unexpected != YYSYMBOL_YYEMPTY) {
        message += ", unexpected " + name(unexpected);
        yysymbol_kind_t expected[4];
        int n = yypcontext_expected_tokens(context, expected, 4);
        for (int i = 0; i < n; ++i) message += (i == 0 ? ", expecting " : " or ") + name(expected[i]);
    }
    state->fail(message);
    return 0;
}
