;; Drawing: entmod, entupd, handent, regapp, and selection sets with ssget and its kin.
;;
;; Like the other drawing functions these never raise a LISP error for bad input: they say
;; why at the command line and give nil. The selection sets themselves are Scheme values;
;; the C++ side only lists and picks entities.
;;
;; The primitives this builds on are defined in C++, in src/lispLibDrawing.cpp.

;;; Selection sets: the entity names in the order they came, with a table for membership.

(define-record-type <selection-set>
  (%make-selection-set names count index)
  selection-set?
  (names ss-names set-ss-names!)
  (count ss-count set-ss-count!)
  (index ss-index))

(set-record-type-printer! <selection-set>
  (lambda (ss port) (simple-format port "<Selection set: ~a>" (ss-count ss))))

(define (name-key e) (cons (entity-name-word0 e) (entity-name-word1 e)))

(define (new-selection-set) (%make-selection-set (make-vector 8 #f) 0 (make-hash-table)))

(define (ss-add! ss e)
  (unless (hash-ref (ss-index ss) (name-key e))
    (when (= (ss-count ss) (vector-length (ss-names ss)))
      (let ((bigger (make-vector (* 2 (vector-length (ss-names ss))) #f)))
        (vector-move-left! (ss-names ss) 0 (ss-count ss) bigger 0)
        (set-ss-names! ss bigger)))
    (vector-set! (ss-names ss) (ss-count ss) e)
    (hash-set! (ss-index ss) (name-key e) #t)
    (set-ss-count! ss (+ (ss-count ss) 1)))
  ss)

(define (ss-list ss)
  (let loop ((i (- (ss-count ss) 1)) (out '()))
    (if (< i 0) out (loop (- i 1) (cons (vector-ref (ss-names ss) i) out)))))

(define (list->selection-set names)
  (let ((ss (new-selection-set)))
    (for-each (lambda (e) (ss-add! ss e)) names)
    ss))

(define (check-ss who ss) (if (selection-set? ss) ss (bad-argument who ss)))
(define (check-ename who e) (if (entity-name? e) e (bad-argument who e)))

(define* (ssadd #:optional (e '()) (ss '()))
  (cond ((lisp-nil? e) (new-selection-set))
        ((lisp-nil? ss) (ss-add! (new-selection-set) (check-ename 'ssadd e)))
        (else (ss-add! (check-ss 'ssadd ss) (check-ename 'ssadd e)))))

(define (ssdel e ss)
  (check-ename 'ssdel e)
  (check-ss 'ssdel ss)
  (if (not (hash-ref (ss-index ss) (name-key e)))
      '()
      (let ((kept (filter (lambda (x) (not (equal? (name-key x) (name-key e)))) (ss-list ss))))
        (hash-remove! (ss-index ss) (name-key e))
        (vector-fill! (ss-names ss) #f)
        (let loop ((i 0) (rest kept))
          (unless (null? rest)
            (vector-set! (ss-names ss) i (car rest))
            (loop (+ i 1) (cdr rest))))
        (set-ss-count! ss (length kept))
        ss)))

(define (sslength ss) (ss-count (check-ss 'sslength ss)))

(define (ssname ss index)
  (check-ss 'ssname ss)
  (let ((i (cond ((exact-integer? index) index)
                 ((and (real? index) (integer? index)) (inexact->exact index))
                 (else (bad-argument 'ssname index)))))
    (if (and (>= i 0) (< i (ss-count ss))) (vector-ref (ss-names ss) i) '())))

(define (ssmemb e ss)
  (check-ename 'ssmemb e)
  (check-ss 'ssmemb ss)
  (if (hash-ref (ss-index ss) (name-key e)) e '()))

;;; Filters: (code . value) groups that must all match, with (-4 . "<OR") ... (-4 . "OR>")
;;; and its kin for logic, and (-4 . "op") before a group for a comparison other than =.

(define (ssget-fail why) (throw 'ssget-refused why))

(define %relational '("*" "=" "!=" "/=" "<>" "<" "<=" ">" ">=" "&" "&="))

;; A filter as a tree of (and ...), (or ...), (xor a b), (not a) and (test op code value).
(define (parse-filter items)
  (define (group? x) (and (pair? x) (exact-integer? (car x))))
  (define (operator? x name) (and (group? x) (eqv? (car x) -4) (string? (cdr x))
                                  (string-ci=? (cdr x) name)))
  (define (closing x) (and (group? x) (eqv? (car x) -4) (string? (cdr x))
                           (string-suffix? ">" (cdr x))))
  ;; Reads tests until the end or a closing operator; returns (tests . rest).
  (define (sequence items)
    (let loop ((items items) (tests '()))
      (cond ((null? items) (cons (reverse tests) '()))
            ((closing (car items)) (cons (reverse tests) items))
            (else (let ((one (single items)))
                    (loop (cdr one) (cons (car one) tests)))))))
  (define (block items kind)
    (let* ((inner (sequence (cdr items)))
           (tests (car inner))
           (rest (cdr inner))
           (close (string-append (string-upcase (symbol->string kind)) ">")))
      (unless (and (pair? rest) (operator? (car rest) close))
        (ssget-fail (simple-format #f "the filter lacks its (-4 . ~s)" close)))
      (case kind
        ((not) (unless (= (length tests) 1) (ssget-fail "<NOT takes one test")))
        ((xor) (unless (= (length tests) 2) (ssget-fail "<XOR takes two tests")))
        (else (when (null? tests)
                (ssget-fail (simple-format #f "<~a holds no test" (string-upcase (symbol->string kind)))))))
      (cons (cons kind tests) (cdr rest))))
  (define (single items)
    (let ((x (car items)))
      (cond ((not (group? x))
             (ssget-fail (simple-format #f "~a is not a group of the filter" (%lisp-notation x #t))))
            ((eqv? (car x) -3) (ssget-fail "extended data is not kept in these drawings"))
            ((operator? x "<AND") (block items 'and))
            ((operator? x "<OR") (block items 'or))
            ((operator? x "<XOR") (block items 'xor))
            ((operator? x "<NOT") (block items 'not))
            ((eqv? (car x) -4)
             (let ((op (and (string? (cdr x)) (string-delete #\space (cdr x)))))
               (unless (and op (every-operator? op))
                 (ssget-fail (simple-format #f "~a is not a comparison" (%lisp-notation x #t))))
               (when (or (null? (cdr items)) (not (group? (cadr items))) (eqv? (caadr items) -4))
                 (ssget-fail (simple-format #f "the comparison ~s has no group after it" op)))
               (cons (list 'test op (caadr items) (cdadr items)) (cddr items))))
            (else (cons (list 'test "=" (car x) (cdr x)) (cdr items))))))
  (define (every-operator? op)
    (let ((parts (string-split op #\,)))
      (and (memv (length parts) '(1 3)) (every-member? parts))))
  (define (every-member? parts)
    (or (null? parts) (and (member (car parts) %relational) (every-member? (cdr parts)))))
  (let ((parsed (sequence items)))
    (unless (null? (cdr parsed))
      (ssget-fail (simple-format #f "~a closes nothing" (%lisp-notation (cadr parsed) #t))))
    (cons 'and (car parsed))))

(define (compare op a b)
  (cond ((string=? op "*") #t)
        ((and (string? a) (string? b))
         (cond ((string=? op "=") (%wcmatch (string-upcase a) (string-upcase b)))
               ((member op '("!=" "/=" "<>")) (not (%wcmatch (string-upcase a) (string-upcase b))))
               ((string=? op "<") (string-ci<? a b))
               ((string=? op "<=") (string-ci<=? a b))
               ((string=? op ">") (string-ci>? a b))
               ((string=? op ">=") (string-ci>=? a b))
               (else #f)))
        ((and (real? a) (real? b))
         (cond ((string=? op "=") (= a b))
               ((member op '("!=" "/=" "<>")) (not (= a b)))
               ((string=? op "<") (< a b))
               ((string=? op "<=") (<= a b))
               ((string=? op ">") (> a b))
               ((string=? op ">=") (>= a b))
               ((string=? op "&") (and (exact-integer? a) (exact-integer? b) (logtest a b)))
               ((string=? op "&=") (and (exact-integer? a) (exact-integer? b) (= (logand a b) b)))
               (else #f)))
        ((and (entity-name? a) (entity-name? b))
         (let ((same (equal? (name-key a) (name-key b))))
           (cond ((string=? op "=") same) ((member op '("!=" "/=" "<>")) (not same)) (else #f))))
        (else #f)))

(define (compare-point op a b)
  (let* ((ops (string-split op #\,))
         (ops (if (= (length ops) 1) (list op op op) ops)))
    (and (list? a) (list? b) (= (length a) (length b))
         (let loop ((a a) (b b) (ops ops))
           (or (null? a) (and (compare (car ops) (car a) (car b)) (loop (cdr a) (cdr b) (cdr ops))))))))

;; The groups of an entity's data with that code; a colour by layer has none written, so
;; it is given as 256.
(define (groups-of data code)
  (let ((found (filter (lambda (g) (and (pair? g) (eqv? (car g) code))) data)))
    (if (and (null? found) (eqv? code 62)) (list (cons 62 256)) found)))

(define (test-matches? data test)
  (let ((op (cadr test)) (code (caddr test)) (value (cadddr test)))
    (let loop ((groups (groups-of data code)))
      (and (pair? groups)
           (or (let ((g (car groups)))
                 (if (and (pair? (cdr g)) (list? value))
                     (compare-point op (cdr g) value)
                     (compare op (cdr g) value)))
               (loop (cdr groups)))))))

(define (filter-matches? data tree)
  (case (car tree)
    ((and) (let loop ((ts (cdr tree))) (or (null? ts) (and (filter-matches? data (car ts)) (loop (cdr ts))))))
    ((or) (let loop ((ts (cdr tree))) (and (pair? ts) (or (filter-matches? data (car ts)) (loop (cdr ts))))))
    ((xor) (not (eq? (filter-matches? data (cadr tree)) (filter-matches? data (caddr tree)))))
    ((not) (not (filter-matches? data (cadr tree))))
    (else (test-matches? data tree))))

;;; Windows: an entity inside, or (crossing) inside or through the rectangle of two corners.

(define (entity-points data)
  (let ((p10 (assv 10 data)) (p11 (assv 11 data)))
    (filter identity (list (and p10 (cdr p10)) (and p11 (cdr p11))))))

(define (inside? p lo hi)
  (and (<= (car lo) (car p) (car hi)) (<= (cadr lo) (cadr p) (cadr hi))))

(define (segment-crosses? a b lo hi)
  (let* ((corners (list lo (list (car hi) (cadr lo)) hi (list (car lo) (cadr hi))))
         (edges (map list corners (append (cdr corners) (list (car corners))))))
    (let loop ((edges edges))
      (and (pair? edges)
           (or (lisp-true? (inters a b (car (car edges)) (cadr (car edges))))
               (loop (cdr edges)))))))

(define (in-window? data lo hi crossing)
  (let ((points (map (lambda (p) (list (car p) (cadr p))) (entity-points data))))
    (and (pair? points)
         (if crossing
             (or (let any-in ((ps points)) (and (pair? ps) (or (inside? (car ps) lo hi) (any-in (cdr ps)))))
                 (and (= (length points) 2) (segment-crosses? (car points) (cadr points) lo hi)))
             (let all-in ((ps points)) (or (null? ps) (and (inside? (car ps) lo hi) (all-in (cdr ps)))))))))

(define %previous-set #f)

;; (ssget [mode] [point point] [filter]): "X" every entity, "L" the last one, "P" the
;; previous set, "W" and "C" a window or crossing window of two points, ":S" one pick, and
;; no mode a selection of picks. nil when nothing is selected.
(define (ssget . args)
  (catch 'ssget-refused
    (lambda ()
      (let* ((mode (and (pair? args) (string? (car args))
                        (string-upcase (string-trim (car args) (char-set #\_ #\.)))))
             (rest (if (and (pair? args) (string? (car args))) (cdr args) args))
             (window (member mode '("W" "C")))
             (corners (if window
                          (begin
                            (unless (and (>= (length rest) 2)
                                         (lisp-true? (catch #t (lambda () (check-point 'ssget (car rest)) #t)
                                                       (lambda _ #f)))
                                         (lisp-true? (catch #t (lambda () (check-point 'ssget (cadr rest)) #t)
                                                       (lambda _ #f))))
                              (ssget-fail (simple-format #f "mode ~s takes two corner points" mode)))
                            (list (check-point 'ssget (car rest)) (check-point 'ssget (cadr rest))))
                          #f))
             (rest (if window (cddr rest) rest))
             (filter-list (cond ((null? rest) '())
                                ((and (null? (cdr rest)) (list? (car rest))) (car rest))
                                (else (ssget-fail (simple-format #f "~a is not a filter list"
                                                                 (%lisp-notation (car rest) #t))))))
             (tree (if (null? filter-list) #f (parse-filter filter-list)))
             (candidates
              (cond ((not mode) (if (pair? args) (ssget-fail "a mode text or a filter list is needed")
                                    (%pick-entities #f)))
                    ((string=? mode "X") (%model-space-entities))
                    ((string=? mode "L") (let ((e (entlast))) (if (lisp-nil? e) '() (list e))))
                    ((string=? mode "P") (if %previous-set (ss-list %previous-set) '()))
                    ((string=? mode ":S") (%pick-entities #t))
                    (window (%model-space-entities))
                    (else (ssget-fail (simple-format #f "~s is not a selection mode of this host" mode)))))
             (lo (and corners (map min (car corners) (cadr corners))))
             (hi (and corners (map max (car corners) (cadr corners))))
             (chosen (filter (lambda (e)
                               (or (and (not tree) (not corners))
                                   (let ((data (entget e)))
                                     (and (pair? data)
                                          (or (not corners) (in-window? data lo hi (string=? mode "C")))
                                          (or (not tree) (filter-matches? data tree))))))
                             (if (list? candidates) candidates '()))))
        (if (null? chosen)
            '()
            (let ((ss (list->selection-set chosen)))
              (set! %previous-set ss)
              ss))))
    (lambda (key why)
      (%print-text (string-append "\n; ssget: " why "\n"))
      '())))

;; Sets and files show their kind in (type x).
(let ((base-type type))
  (set! type (lambda (x) (if (selection-set? x) 'PICKSET (base-type x)))))

(module-replace! (current-module)
  '(entmod entupd handent regapp ssget ssadd ssdel sslength ssname ssmemb))
