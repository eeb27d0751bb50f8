;; The host module (orvex host): what every document's environment imports before
;; (guile), so that its CAD LISP forms take the place of Guile's of the same name.

(use-modules (orvex host primitives)
             (system syntax)
             (system vm vm)
             (srfi srfi-9)
             (srfi srfi-9 gnu)
             (ice-9 format))

;; |name| may name a symbol with blanks, such as | wdupda_chkdwglockstatus|.
(read-enable 'r7rs-symbols)

;;; Values

(define-record-type <entity-name>
  (make-entity-name word0 word1)
  entity-name?
  (word0 entity-name-word0)
  (word1 entity-name-word1))

(set-record-type-printer! <entity-name>
  (lambda (name port) (display (%lisp-notation name #t) port)))

(define T #t)
(define nil '())

;; CAD LISP has one false value, nil; here both '() and #f stand for it.
(define (lisp-nil? x) (or (eq? x #f) (null? x)))
(define (lisp-true? x) (not (lisp-nil? x)))

(define (lisp-error message . irritants)
  (scm-error 'lisp-error #f "~A" (list (apply simple-format #f message irritants)) #f))

(define (bad-argument who value)
  (lisp-error "~a: bad argument type: ~a" who (%lisp-notation value #t)))

(define (check-string who x) (if (string? x) x (bad-argument who x)))
(define (check-integer who x) (if (exact-integer? x) x (bad-argument who x)))
(define (check-number who x) (if (real? x) x (bad-argument who x)))

(define (unspecified) (if #f #f))

;;; Control forms that treat nil as false

(define-syntax lisp-progn
  (syntax-rules ()
    ((_) '())
    ((_ body ...) (begin body ...))))

(define-syntax lisp-if
  (syntax-rules ()
    ((_ test then) (if (lisp-true? test) then '()))
    ((_ test then else) (if (lisp-true? test) then else))))

(define-syntax lisp-cond
  (syntax-rules (else =>)
    ((_) '())
    ((_ (else body ...)) (lisp-progn body ...))
    ((_ (test => receiver) clause ...)
     (let ((value test)) (if (lisp-true? value) (receiver value) (lisp-cond clause ...))))
    ((_ (test) clause ...)
     (let ((value test)) (if (lisp-true? value) value (lisp-cond clause ...))))
    ((_ (test body ...) clause ...)
     (if (lisp-true? test) (lisp-progn body ...) (lisp-cond clause ...)))))

(define-syntax lisp-and
  (syntax-rules ()
    ((_) #t)
    ((_ e) e)
    ((_ e more ...) (let ((value e)) (if (lisp-true? value) (lisp-and more ...) value)))))

(define-syntax lisp-or
  (syntax-rules ()
    ((_) '())
    ((_ e) e)
    ((_ e more ...) (let ((value e)) (if (lisp-true? value) value (lisp-or more ...))))))

(define-syntax lisp-when
  (syntax-rules ()
    ((_ test body ...) (if (lisp-true? test) (lisp-progn body ...) '()))))

(define-syntax lisp-unless
  (syntax-rules ()
    ((_ test body ...) (if (lisp-true? test) '() (lisp-progn body ...)))))

(define-syntax lisp-while
  (syntax-rules ()
    ((_ test body ...)
     (let loop ((last '()))
       (if (lisp-true? test) (loop (lisp-progn body ...)) last)))))

(define-syntax foreach
  (syntax-rules ()
    ((_ name items body ...)
     (let loop ((rest (if (list? items) items (bad-argument 'foreach items))) (last '()))
       (if (pair? rest)
           (loop (cdr rest) (let ((name (car rest))) (lisp-progn body ...)))
           last)))))

(define-syntax repeat
  (syntax-rules ()
    ((_ count body ...)
     (let ((n (check-integer 'repeat count)))
       (let loop ((i 0) (last '()))
         (if (< i n) (loop (+ i 1) (lisp-progn body ...)) last))))))

(define (%set-global! name value)
  (module-define! (current-module) name value)
  value)

;; (setq a 1 b 2): sets a local variable where one is in scope, and otherwise defines or
;; sets the variable of the document.
(define-syntax setq
  (lambda (form)
    (syntax-case form ()
      ((_) #''())
      ((_ name value)
       (identifier? #'name)
       (call-with-values (lambda () (syntax-local-binding #'name))
         (lambda (kind binding)
           (if (memq kind '(lexical displaced-lexical))
               #'(let ((v value)) (set! name v) v)
               #'(%set-global! 'name value)))))
      ((_ name value)
       (syntax-violation 'setq "setq: a variable name is needed" form #'name))
      ((_ name value next ...)
       #'(begin (setq name value) (setq next ...))))))

;; (defun name (arg ... / local ...) body ...): the locals start as nil.
(define-syntax defun
  (lambda (form)
    (define (split formals)
      (let loop ((rest formals) (args '()))
        (cond ((null? rest) (values (reverse args) '()))
              ((eq? (syntax->datum (car rest)) '/) (values (reverse args) (cdr rest)))
              (else (loop (cdr rest) (cons (car rest) args))))))
    (syntax-case form ()
      ((_ name (formal ...) body ...)
       (identifier? #'name)
       (call-with-values (lambda () (split #'(formal ...)))
         (lambda (args locals)
           (with-syntax (((arg ...) args) ((local ...) locals))
             #'(begin
                 (define (name arg ...) (let ((local '()) ...) (lisp-progn body ...)))
                 'name))))))))

(define-syntax function
  (syntax-rules () ((_ f) f)))

(define (lisp-exit . ignored) (lisp-error "quit / exit abort"))

;;; Lists

(define (lisp-car x)
  (cond ((pair? x) (car x)) ((lisp-nil? x) '()) (else (bad-argument 'car x))))
(define (lisp-cdr x)
  (cond ((pair? x) (cdr x)) ((lisp-nil? x) '()) (else (bad-argument 'cdr x))))
(define (lisp-caar x) (lisp-car (lisp-car x)))
(define (lisp-cadr x) (lisp-car (lisp-cdr x)))
(define (lisp-cdar x) (lisp-cdr (lisp-car x)))
(define (lisp-cddr x) (lisp-cdr (lisp-cdr x)))
(define (lisp-caddr x) (lisp-car (lisp-cddr x)))

(define (nth n items)
  (check-integer 'nth n)
  (let loop ((i n) (rest items))
    (cond ((or (< i 0) (not (pair? rest))) '())
          ((= i 0) (car rest))
          (else (loop (- i 1) (cdr rest))))))

(define (lisp-last items)
  (if (pair? items)
      ;; The slow walker meeting the fast one means the list never ends.
      (let loop ((rest items) (slow items) (step #f))
        (cond ((not (pair? (cdr rest))) (car rest))
              ((and step (eq? (cdr rest) slow)) (lisp-error "last: circular list"))
              (else (loop (cdr rest) (if step (cdr slow) slow) (not step)))))
      '()))

(define (atom x) (not (pair? x)))
(define (listp x) (or (pair? x) (lisp-nil? x)))
(define (null x) (lisp-nil? x))
(define (lisp-not x) (lisp-nil? x))

;; A function given as a quoted symbol, as in (mapcar '1+ items).
(define (callable who f)
  (cond ((procedure? f) f)
        ((symbol? f)
         (let ((variable (module-variable (current-module) f)))
           (if (and variable (variable-bound? variable) (procedure? (variable-ref variable)))
               (variable-ref variable)
               (lisp-error "no function definition: ~a" f))))
        (else (bad-argument who f))))

(define (mapcar f . lists)
  (for-each (lambda (l) (unless (or (list? l) (lisp-nil? l)) (bad-argument 'mapcar l))) lists)
  (let ((proc (callable 'mapcar f)))
    (let loop ((rests lists) (out '()))
      (if (and (pair? rests) (let every ((r rests)) (or (null? r) (and (pair? (car r)) (every (cdr r))))))
          (loop (map cdr rests) (cons (apply proc (map car rests)) out))
          (reverse out)))))

(define (lisp-apply f . args)
  (when (null? args) (lisp-error "apply: too few arguments"))
  (let ((items (car (last-pair args))))
    (unless (or (list? items) (lisp-nil? items)) (bad-argument 'apply items))
    (apply apply (callable 'apply f)
           (append (list-head args (- (length args) 1)) (list (if (list? items) items '()))))))

;;; Comparison

(define (lisp-= a . more)
  (let loop ((a a) (more more))
    (cond ((null? more) #t)
          ((and (real? a) (real? (car more)))
           (and (= a (car more)) (loop (car more) (cdr more))))
          ((and (string? a) (string? (car more)))
           (and (string=? a (car more)) (loop (car more) (cdr more))))
          (else (bad-argument '= (if (or (real? a) (string? a)) (car more) a))))))

(define (/= a . more)
  (let loop ((a a) (more more))
    (cond ((null? more) #t)
          ((equal a (car more)) #f)
          (else (loop (car more) (cdr more))))))

(define (eq a b)
  (or (eqv? a b)
      (and (lisp-nil? a) (lisp-nil? b))
      (and (entity-name? a) (entity-name? b) (equal? a b))))

(define* (equal a b #:optional (fuzz 0))
  ;; Circular lists would walk forever: after many pairs every pair of pairs compared is
  ;; noted, and one met again counts as equal, so that the walk ends.
  (let ((seen #f) (steps 0))
    (let same ((a a) (b b))
      (cond ((and (number? a) (number? b)) (<= (abs (- a b)) fuzz))
            ((and (pair? a) (pair? b))
             (set! steps (+ steps 1))
             (when (and (not seen) (> steps 100000)) (set! seen (make-hash-table)))
             (or (and seen (memq b (hashq-ref seen a '())) #t)
                 (begin
                   (when seen (hashq-set! seen a (cons b (hashq-ref seen a '()))))
                   (and (same (car a) (car b)) (same (cdr a) (cdr b))))))
            ((and (lisp-nil? a) (lisp-nil? b)) #t)
            (else (equal? a b))))))

(define (type x)
  (cond ((lisp-nil? x) '())
        ((exact-integer? x) 'INT)
        ((real? x) 'REAL)
        ((string? x) 'STR)
        ((or (symbol? x) (eq? x #t)) 'SYM)
        ((pair? x) 'LIST)
        ((entity-name? x) 'ENAME)
        ((procedure? x) 'USUBR)
        (else 'UNKNOWN)))

;;; Numbers and text

(define (fix x) (inexact->exact (truncate (check-number 'fix x))))
(define (float x) (exact->inexact (check-number 'float x)))

(define (itoa n) (number->string (check-integer 'itoa n)))

;; The leading number of a text, as C's atoi and atof read it: "12abc" is 12, "abc" 0.
(define (numeric-prefix text with-fraction?)
  (let* ((n (string-length text))
         (char-at (lambda (i) (and (< i n) (string-ref text i))))
         (digits (lambda (i)
                   (let loop ((i i))
                     (let ((c (char-at i)))
                       (if (and c (char<=? #\0 c #\9)) (loop (+ i 1)) i)))))
         (start (let skip ((i 0))
                  (let ((c (char-at i))) (if (and c (char-whitespace? c)) (skip (+ i 1)) i))))
         (body (if (memv (char-at start) '(#\+ #\-)) (+ start 1) start))
         (int-end (digits body))
         (end (if (not with-fraction?)
                  int-end
                  (let* ((fraction-end (if (eqv? (char-at int-end) #\.) (digits (+ int-end 1)) int-end))
                         (exponent (and (memv (char-at fraction-end) '(#\e #\E))
                                        (let* ((s (+ fraction-end 1))
                                               (s (if (memv (char-at s) '(#\+ #\-)) (+ s 1) s))
                                               (e (digits s)))
                                          (and (> e s) e)))))
                    (or exponent fraction-end)))))
    (substring text start end)))

(define (atoi text)
  (let ((n (string->number (numeric-prefix (check-string 'atoi text) #f))))
    (if (exact-integer? n) n 0)))

(define (atof text)
  (let ((n (string->number (numeric-prefix (check-string 'atof text) #t))))
    (if (real? n) (exact->inexact n) 0.0)))

(define (strcat . texts)
  (apply string-append (map (lambda (s) (check-string 'strcat s)) texts)))

(define (strlen . texts)
  (apply + (map (lambda (s) (string-length (check-string 'strlen s))) texts)))

(define* (strcase text #:optional (lower '()))
  (check-string 'strcase text)
  (if (lisp-true? lower) (string-downcase text) (string-upcase text)))

(define* (substr text start #:optional (count '()))
  (check-string 'substr text)
  (check-integer 'substr start)
  (when (< start 1) (bad-argument 'substr start))
  (let* ((size (string-length text))
         (from (min (- start 1) size))
         (to (if (lisp-nil? count)
                 size
                 (begin
                   (check-integer 'substr count)
                   (when (< count 0) (bad-argument 'substr count))
                   (min size (+ from count))))))
    (substring text from to)))

(define* (vl-string-search pattern text #:optional (start 0))
  (check-string 'vl-string-search pattern)
  (check-string 'vl-string-search text)
  (check-integer 'vl-string-search start)
  (or (string-contains text pattern (min (max start 0) (string-length text))) '()))

;;; The command line

(define* (princ #:optional (value (unspecified)) port)
  (%print-text (%lisp-notation value #f))
  value)

(define* (prin1 #:optional (value (unspecified)) port)
  (%print-text (%lisp-notation value #t))
  value)

(define* (print #:optional (value (unspecified)) port)
  (%print-text (string-append "\n" (%lisp-notation value #t) " "))
  value)

(define (prompt text)
  (%print-text (check-string 'prompt text))
  '())

(define (terpri)
  (%print-text "\n")
  '())

(define (vl-princ-to-string value) (%lisp-notation value #f))
(define (vl-prin1-to-string value) (%lisp-notation value #t))

;; Scheme's own display and write print at the command line too.
(let ((port (make-soft-port
             (vector (lambda (c) (%print-text (string c)))
                     (lambda (s) (%print-text s))
                     (lambda () #t)
                     #f
                     #f)
             "w")))
  (setvbuf port 'none)
  (set-current-output-port port))

;;; Evaluation and the bridge

(define (%eval-in text module)
  (let ((port (open-input-string text)))
    (let loop ((value (unspecified)))
      (let ((form (read port)))
        (if (eof-object? form) value (loop (eval form module)))))))

(define (veval-str+ text)
  (%eval-in (check-string 'veval-str+ text) (current-module)))

;; Makes a Scheme function callable by ovedInvoke. The name may be defined later; a
;; variable that holds something else than a function is refused.
(define (vl-orvex-defun name)
  (let ((symbol (cond ((symbol? name) name)
                      ((string? name) (string->symbol name))
                      (else (bad-argument 'vl-orvex-defun name)))))
    (let ((variable (module-variable (current-module) symbol)))
      (when (and variable (variable-bound? variable) (not (procedure? (variable-ref variable))))
        (lisp-error "vl-orvex-defun: ~a is not a function" (symbol->string symbol))))
    (%export-for-invoke (symbol->string symbol))
    symbol))

(define %documents (make-hash-table))

(define (%document-module id)
  (or (hashv-ref %documents id)
      (let ((module (resolve-module
                     (list 'orvex 'document (string->symbol (simple-format #f "d~a" id)))
                     #f)))
        (set-module-uses! module (list (resolve-interface '(orvex host))
                                       (resolve-interface '(guile))))
        ;; With a public interface Guile takes the module as loaded, and does not look
        ;; for its file each time it resolves the name.
        (let ((interface (make-module)))
          (set-module-name! interface (module-name module))
          (set-module-kind! interface 'interface)
          (set-module-public-interface! module interface))
        (hashv-set! %documents id module)
        module)))

(define (%forget-document id)
  (let ((module (hashv-ref %documents id)))
    (when module
      (module-clear! module)
      (hashv-remove! %documents id)
      ;; Out of the registry too, so that the collector can take it.
      (hashq-remove! (module-submodules (resolve-module '(orvex document) #f))
                     (car (last-pair (module-name module)))))))

;; Runaway recursion ends in a LISP error instead of eating the memory.
(define (%with-limits thunk)
  (call-with-stack-overflow-handler 4000000 thunk
    (lambda () (lisp-error "stack overflow: the evaluation nests too deeply"))))

(define (%in-module module thunk)
  (save-module-excursion
   (lambda ()
     (set-current-module module)
     (%with-limits thunk))))

(define (%eval-string text id)
  (let ((module (%document-module id)))
    (%in-module module (lambda () (%eval-in text module)))))

(define (%load-file path id)
  (let ((module (%document-module id)))
    (%in-module module
      (lambda ()
        (call-with-input-file path
          (lambda (port)
            (set-port-encoding! port "UTF-8")
            (let loop ((value (unspecified)))
              (let ((form (read port)))
                (if (eof-object? form) value (loop (eval form module)))))))))))

(define (%invoke id name args)
  (let* ((module (%document-module id))
         (variable (module-variable module (string->symbol name))))
    (unless (and variable (variable-bound? variable) (procedure? (variable-ref variable)))
      (lisp-error "no function definition: ~a" name))
    (%in-module module (lambda () (apply (variable-ref variable) args)))))

(define (%lookup id name)
  (let ((variable (module-variable (%document-module id) (string->symbol name))))
    (and variable (variable-bound? variable) (list (variable-ref variable)))))

(define (%define! id name value)
  (module-define! (%document-module id) (string->symbol name) value))

(define (%undefine! id name)
  (module-remove! (%document-module id) (string->symbol name)))

(define (%define-module-function! id name)
  (let* ((symbol (string->symbol name))
         (procedure (lambda args (%call-module-function id name args))))
    (set-procedure-property! procedure 'name symbol)
    (module-define! (%document-module id) symbol procedure)))

;; The text of an exception caught at the boundary.
(define (%error-message key args)
  (define (formatted message irritants)
    (let ((irritants (if (list? irritants) irritants '())))
      (catch #t
        (lambda () (apply simple-format #f message irritants))
        (lambda ignored
          (string-join (cons message (map (lambda (x) (%lisp-notation x #t)) irritants)) " ")))))
  (cond ((eq? key 'quit) "quit / exit abort")
        ;; (who message source-properties form subform)
        ((and (eq? key 'syntax-error) (list? args) (= (length args) 5) (string? (cadr args)))
         (let ((form (or (list-ref args 4) (list-ref args 3))))
           (string-append (cadr args) " in " (%lisp-notation (syntax->datum form) #t))))
        ((and (list? args) (>= (length args) 3) (string? (cadr args)))
         (let ((who (car args))
               (text (formatted (cadr args) (caddr args))))
           (if (and who (not (memq key '(lisp-error host-exception))))
               (simple-format #f "~a: ~a" who text)
               text)))
        ((and (eq? key '%exception) (pair? args))
         (string-append "exception: " (%lisp-notation (car args) #t)))
        (else
         (string-join (map (lambda (x) (%lisp-notation x #t)) (cons key (if (list? args) args (list args))))
                      " "))))

(define %exports
  '(T nil
    make-entity-name entity-name? entity-name-word0 entity-name-word1
    veval-str+ vl-orvex-defun
    setq defun foreach repeat function
    strcat strlen strcase substr vl-string-search itoa atoi atof fix float
    princ prin1 print prompt terpri vl-princ-to-string vl-prin1-to-string
    nth atom listp null eq equal /= type mapcar
    (lisp-progn . progn)
    (lisp-if . if) (lisp-cond . cond) (lisp-and . and) (lisp-or . or) (lisp-not . not)
    (lisp-when . when) (lisp-unless . unless) (lisp-while . while)
    (lisp-car . car) (lisp-cdr . cdr) (lisp-caar . caar) (lisp-cadr . cadr)
    (lisp-cdar . cdar) (lisp-cddr . cddr) (lisp-caddr . caddr)
    (lisp-last . last) (lisp-= . =) (lisp-apply . apply)
    (lisp-exit . exit) (lisp-exit . quit)))

;; Exported as replacements, so that a document, which imports this module and (guile),
;; takes these without a warning about the names both define.
(module-replace! (current-module) %exports)
